#pragma once

#include <cstdint>

#include "base/Text.h"

/// The table Benutzerkonto of the account file: the columns that the tool uses, the fixed initial password, the keys of
/// the account list's rows, and every statement that the tool sends for this table. The table may have further columns;
/// they are left alone.
///
/// Statements are plain text put together from pieces. Names stand between single quotes exactly as typed, and quotes
/// in them are not doubled; IDs are bare decimal digits.
namespace tolv::accountTable {

inline constexpr base::TextView kTable = u"Benutzerkonto";

inline constexpr base::TextView kId = u"BenKTO_ID";                    ///< auto-number
inline constexpr base::TextView kName = u"BenKTO_Name";                ///< text
inline constexpr base::TextView kPass = u"BenKTO_Pass";                ///< text, 64 hexadecimal digits
inline constexpr base::TextView kServerPath = u"BenKTO_ServerPath";    ///< text
inline constexpr base::TextView kProgUpdate = u"BenKTO_R_ProgUpdate";  ///< yes/no

/// The ID of an account that has no row yet.
inline constexpr std::int32_t kNewAccount = 0;

/// The value of kPass until the user replaces the initial password.
inline constexpr base::TextView kStoredInitialPassword =
    u"a4c123b1612dd272d1371c17149d439536b3216fdaeeb975729fae923d5a4fd1";
/// The initial password itself, which the administrator is told.
inline constexpr base::TextView kInitialPassword = u"MNwelKOP";

/// Key of the account's row in the list: the prefix and the decimal ID.
base::Text listKey(std::int32_t id);

/// The rows with this name.
base::Text selectByName(base::TextView name);
/// The rows with this name, except the account's own.
base::Text selectOthersByName(base::TextView name, std::int32_t id);
base::Text selectById(std::int32_t id);
/// All rows, ordered by name.
base::Text selectAll();
/// Sets the stored initial password. @param id  the list row's tag as text
base::Text updateToInitialPassword(base::TextView id);
/// @param id  the list row's tag as text
base::Text deleteById(base::TextView id);

}  // namespace tolv::accountTable
