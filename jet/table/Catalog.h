#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "base/Text.h"
#include "jet/page/PageSource.h"
#include "jet/table/CatalogEntry.h"
#include "jet/table/Table.h"

namespace jet {

/// The objects of the file: the rows of MSysObjects (whose definition is page 2), read once.
class Catalog {
public:
    /// @throws RuntimeError (damage)
    explicit Catalog(PageSource& source);

    const std::vector<CatalogEntry>& entries() const { return entries_; }

    /// Finds a local table by name, system tables included.
    /// @return null if there is none
    /// @throws RuntimeError (damage) if two tables have this name
    const CatalogEntry* table(base::TextView name) const;

private:
    std::vector<CatalogEntry> entries_;
};

/// @return nothing if the catalog has no such table
std::optional<Table> openTable(PageSource& source, base::TextView name);

}  // namespace jet
