#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "base/Value.h"
#include "jet/table/Catalog.h"
#include "jet/table/Table.h"
#include "jet/table/TableDefinition.h"

namespace jet {

/// The numbers by which objects are named in some tables. That of a local table is the first page of its definition, so
/// it is another one in another file; all others stay. See docs/file-format.md, "Catalog".
class ObjectNumbers {
public:
    void give(std::uint32_t original, std::uint32_t copy) { copies_[original] = copy; }

    std::uint32_t of(std::uint32_t original) const;

    /// The columns of a table that hold numbers of objects; none for most tables.
    static std::vector<const Column*> columnsIn(const CatalogEntry& table, const TableDefinition& definition);

    /// Changes the number in these columns of a row.
    /// @param row  values by column number
    void renumber(const std::vector<const Column*>& columns, std::vector<base::Value>& row) const;

    /// Changes the pages of partner tables.
    void renumber(std::vector<LogicalIndex>& indexes) const;

private:
    std::map<std::uint32_t, std::uint32_t> copies_;
};

/// The local tables of a file in the order of its catalog, the system tables included.
/// @throws RuntimeError that names the table whose definition cannot be read
std::vector<Table> localTables(PageSource& source);

}  // namespace jet
