#pragma once

#include <optional>

#include "jet/check/CheckContext.h"
#include "jet/table/CatalogEntry.h"
#include "jet/table/TableDefinition.h"

namespace jet {

struct CheckedTable {
    base::Text name;
    TableDefinition definition;
    std::size_t rowCount = 0;  ///< rows found

    /// A row count may be out of date. Only together with a sign of a lost row is it a fault.
    bool countsMoreThanFound() const { return definition.rowCount > rowCount; }
};

/// Checks a table with everything that belongs to it: definition, maps, data pages, rows, long values, indexes.
/// @return nothing if the definition cannot be read
std::optional<CheckedTable> checkTable(const CheckContext& context, const CatalogEntry& entry);

}  // namespace jet
