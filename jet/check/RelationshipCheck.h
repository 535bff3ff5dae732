#pragma once

#include <vector>

#include "jet/check/TableCheck.h"

namespace jet {

/// A relationship as MSysRelationships describes it.
struct Relationship {
    static constexpr std::uint32_t kNotEnforced = 0x2;
    static constexpr std::uint32_t kCascadeUpdates = 0x100;
    static constexpr std::uint32_t kCascadeDeletes = 0x1000;
    static constexpr std::uint32_t kSetNullOnDelete = 0x2000;

    base::Text name;
    std::uint32_t flags = 0;
    base::Text table;  ///< the referencing table
    base::Text referencedTable;
    std::vector<base::Text> columns;
    std::vector<base::Text> referencedColumns;  ///< in pairs with the columns above
};

/// Checks relationships: the index of each side must name that of the other side, and the enforcing records must agree
/// with MSysRelationships, in both directions.
void checkRelationships(const CheckContext& context, const std::vector<CatalogEntry>& entries,
                        const std::vector<CheckedTable>& tables);

}  // namespace jet
