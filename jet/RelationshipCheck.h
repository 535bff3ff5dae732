#pragma once

#include <vector>

#include "jet/TableCheck.h"

namespace jet {

struct CheckedTable {
    base::Text name;
    TableDefinition definition;
};

/// Checks relationships: each side's index names the other one, and what enforces a relationship is what
/// MSysRelationships says of it, in both directions.
void checkRelationships(const CheckContext& context, const std::vector<CatalogEntry>& entries,
                        const std::vector<CheckedTable>& tables);

}  // namespace jet
