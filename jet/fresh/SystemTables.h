#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "base/Value.h"
#include "jet/fresh/TableDesign.h"

/// The contents of every new file: the designs of the four system tables and their first rows. See
/// docs/file-format.md, "A fresh file".
namespace jet {

/// MSysObjects, MSysACEs, MSysQueries and MSysRelationships, whose definitions are the pages 2 to 5.
std::array<TableDesign, 4> systemTableDesigns();

/// The creation date of a file, and the constant that masks the numbers of the built-in accounts in it. It is not known
/// how one follows from the other; this pair occurs together in a real file.
struct CreationStamp {
    base::Date date;
    std::array<std::uint8_t, 2> accountMask;
};
CreationStamp knownCreationStamp();

/// The built-in accounts, which own objects and have rights.
enum class BuiltInAccount { Admin, Users, Engine, Creator };
base::Bytes accountId(BuiltInAccount account, const CreationStamp& stamp);

/// A row of MSysObjects, values by column number.
/// @param properties  the whole value of LvProp; empty for none
std::vector<base::Value> objectRow(std::uint32_t id, std::uint32_t parentId, base::TextView name, std::int16_t type,
                                   std::uint32_t flags, BuiltInAccount owner, const CreationStamp& stamp,
                                   base::Bytes properties = {});

/// A row of MSysACEs: the rights of an account to an object.
std::vector<base::Value> accessRow(std::uint32_t objectId, BuiltInAccount account, std::uint32_t rights,
                                   bool isInherited, const CreationStamp& stamp);

std::vector<std::vector<base::Value>> firstObjectRows(const CreationStamp& stamp);
std::vector<std::vector<base::Value>> firstAccessRows(const CreationStamp& stamp);

}  // namespace jet
