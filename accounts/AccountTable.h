#pragma once

#include <cstdint>

#include "base/Text.h"

/// The table Benutzerkonto of the account file: its columns as the tool uses them, the fixed initial
/// password, the key scheme of the account list and every statement that is sent against the table.
/// Further columns may be there and are left alone.
///
/// Statements are concatenated text. Names stand between single quotes exactly as typed, quotes in them are
/// not doubled; IDs are bare decimal digits.
namespace tolv::accountTable {

inline constexpr base::TextView kTable = u"Benutzerkonto";

inline constexpr base::TextView kId = u"BenKTO_ID";                    ///< auto-number
inline constexpr base::TextView kName = u"BenKTO_Name";                ///< text
inline constexpr base::TextView kPass = u"BenKTO_Pass";                ///< text, 64 hexadecimal digits
inline constexpr base::TextView kServerPath = u"BenKTO_ServerPath";    ///< text
inline constexpr base::TextView kProgUpdate = u"BenKTO_R_ProgUpdate";  ///< yes/no

/// The ID that stands for an account without a row.
inline constexpr std::int32_t kNewAccount = 0;

/// What kPass holds as long as the user has not replaced the initial password.
inline constexpr base::TextView kStoredInitialPassword =
    u"a4c123b1612dd272d1371c17149d439536b3216fdaeeb975729fae923d5a4fd1";
/// The password that belongs to it, told to the administrator.
inline constexpr base::TextView kInitialPassword = u"MNwelKOP";

/// Key of the account's row in the list: the prefix and the decimal ID.
base::Text listKey(std::int32_t id);

/// Rows that bear the name.
base::Text selectByName(base::TextView name);
/// Rows that bear the name, the account's own left out.
base::Text selectOthersByName(base::TextView name, std::int32_t id);
base::Text selectById(std::int32_t id);
/// All rows in the order of their names.
base::Text selectAll();
/// Sets the stored initial password. @param id  the list row's tag as text
base::Text updateToInitialPassword(base::TextView id);
/// @param id  the list row's tag as text
base::Text deleteById(base::TextView id);

}  // namespace tolv::accountTable
