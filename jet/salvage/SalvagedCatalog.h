#pragma once

#include <map>
#include <optional>
#include <set>
#include <vector>

#include "jet/salvage/SalvagedTable.h"
#include "jet/table/Catalog.h"
#include "jet/table/PropertyBlob.h"

namespace jet {

/// The pages of the definitions of the system tables.
inline constexpr PageNumber kFirstSystemTable = 2;
inline constexpr PageNumber kLastSystemTable = 5;

/// An object of a damaged catalog, as far as its row can be read.
struct SalvagedObject {
    std::uint32_t id = 0;
    std::optional<base::Text> name;
    std::optional<std::int16_t> type;
    std::uint32_t flags = 0;
    std::optional<PropertyBlob> properties;  ///< nothing if they cannot be read
    std::size_t lostProperties = 0;          ///< single ones that cannot be read
    std::uint32_t parentId = 0;
    std::vector<base::Value> values;  ///< of an object that is no table, by the column numbers of a fresh file
    bool isWhole = true;
    RowPointer row;
};

/// One pair of columns of a relationship.
struct SalvagedRelationship {
    base::Text name;
    std::uint32_t flags = 0;
    std::uint32_t place = 0;  ///< of the pair
    std::uint32_t pairCount = 0;
    base::Text table, column;
    base::Text referencedTable, referencedColumn;
};

/// The definition of a system table. All files have the same ones, so a damaged one is replaced.
/// @param page  2 to 5
DamagedDefinition systemDefinition(DamagedFile& file, PageNumber page);

/// @param report  is called for each row that cannot be read whole
std::vector<SalvagedObject> readObjects(const SalvagedTable& catalog, const SalvagedTable::Report& report);

/// Only whole rows.
std::vector<SalvagedRelationship> readRelationships(const SalvagedTable& table, const SalvagedTable::Report& report);

/// Whole rows of any system table, by the column numbers of a fresh file.
std::vector<std::vector<base::Value>> readWholeRows(const SalvagedTable& table, PageNumber page);

/// The objects to which rows of MSysACEs give rights.
std::set<std::uint32_t> readObjectsWithRights(const SalvagedTable& table);

}  // namespace jet
