#pragma once

#include <optional>

#include "jet/Catalog.h"
#include "jet/Checker.h"
#include "jet/PageOwners.h"
#include "jet/TableDefinition.h"

namespace jet {

/// What all parts of the checker work with.
struct CheckContext {
    PageSource& source;
    Findings& findings;
    PageOwners& owners;
    CheckCounts& counts;
};

/// Checks a table with all that belongs to it: definition, maps, data pages, rows, long values, indexes.
/// @return its definition, if that can be read
std::optional<TableDefinition> checkTable(const CheckContext& context, const CatalogEntry& entry);

}  // namespace jet
