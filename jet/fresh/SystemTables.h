#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "base/Value.h"
#include "jet/fresh/TableDesign.h"

/// What every fresh file holds: the designs of the four system tables and their first rows. See
/// docs/file-format.md, "A fresh file".
namespace jet {

/// MSysObjects, MSysACEs, MSysQueries, MSysRelationships, whose definitions are pages 2 to 5.
std::array<TableDesign, 4> systemTableDesigns();

/// Creation date of a file, and the constant with which the built-in accounts' numbers are masked in it. How one
/// follows from the other is not known; this pair was seen together.
struct CreationStamp {
    base::Date date;
    std::array<std::uint8_t, 2> accountMask;
};
CreationStamp knownCreationStamp();

/// The built-in accounts, to whom objects and rights belong.
enum class BuiltInAccount { Admin, Users, Engine, Creator };
base::Bytes accountId(BuiltInAccount account, const CreationStamp& stamp);

/// A row of MSysObjects, values by column number.
/// @param properties  LvProp as a whole, or empty for none
std::vector<base::Value> objectRow(std::uint32_t id, std::uint32_t parentId, base::TextView name, std::int16_t type,
                                   std::uint32_t flags, BuiltInAccount owner, const CreationStamp& stamp,
                                   base::Bytes properties = {});

/// A row of MSysACEs: what an account may do with an object.
std::vector<base::Value> accessRow(std::uint32_t objectId, BuiltInAccount account, std::uint32_t rights,
                                   bool isInherited, const CreationStamp& stamp);

std::vector<std::vector<base::Value>> firstObjectRows(const CreationStamp& stamp);
std::vector<std::vector<base::Value>> firstAccessRows(const CreationStamp& stamp);

}  // namespace jet
