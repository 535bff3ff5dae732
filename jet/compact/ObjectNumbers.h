#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "base/Value.h"
#include "jet/page/Header.h"
#include "jet/table/Catalog.h"
#include "jet/table/TableDefinition.h"

namespace jet {

/// The numbers by which the catalog and the rights name objects. That of a local table is the first page of its
/// definition, so it is another one in another file; all others stay.
class ObjectNumbers {
public:
    void give(std::uint32_t original, std::uint32_t copy) { copies_[original] = copy; }

    std::uint32_t of(std::uint32_t original) const;

    /// Changes the number in a row of a system table that has one.
    /// @param definition  of the row's table, in the original
    /// @param row         values by column number
    void renumber(const TableDefinition& definition, const Header& original, std::vector<base::Value>& row) const;

    /// Changes the pages of partner tables.
    void renumber(std::vector<LogicalIndex>& indexes) const;

private:
    std::map<std::uint32_t, std::uint32_t> copies_;
};

/// The local tables of a catalog, in its order.
std::vector<CatalogEntry> localTables(const Catalog& catalog);

}  // namespace jet
