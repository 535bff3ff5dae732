#pragma once

#include <optional>
#include <unordered_set>

#include "base/Text.h"
#include "base/Value.h"
#include "jet/page/DataPage.h"
#include "jet/page/PageSource.h"
#include "jet/page/UsageMap.h"
#include "jet/table/Catalog.h"
#include "jet/table/PropertyBlob.h"
#include "jet/table/RowCodec.h"
#include "jet/table/TableDefinition.h"

namespace jet {

/// A row where it lies, with its page kept alive.
struct Row {
    RowPointer pointer;  ///< its identity, also when its data was moved elsewhere
    RowView view;
    PageView page;
};

/// A table as one operation sees it. Holds no lock and no pages of its own.
class Table {
public:
    /// @param source  must outlive the table, as must the table its rows
    /// @throws RuntimeError (damage)
    Table(PageSource& source, CatalogEntry entry);

    const base::Text& name() const { return entry_.name; }
    const CatalogEntry& entry() const { return entry_; }
    const TableDefinition& definition() const { return definition_; }
    PageSource& source() const { return *source_; }

    /// Pages that hold the table's rows.
    const UsageMap& ownedPages() const { return ownedPages_; }

    /// The live row at this place, its data followed to where they lie.
    /// @throws RuntimeError (damage) if there is none: whoever asks got the place from the file
    Row rowAt(RowPointer pointer) const;

    /// The row's column as a value; null, long values read whole.
    base::Value value(const RowView& row, const Column& column) const;

    /// Properties of the table and its columns; read at each call.
    PropertyBlob properties() const;

    /// Looks for rows that a scan has not met because the map of owned pages lacks theirs. Costs nothing where the scan
    /// met as many rows as are counted; else an index tells, or, without one, the pages that name this table.
    /// @param rowsMet  in a scan to the end
    /// @throws RuntimeError (damage) if there are such rows
    void requireAllMet(std::size_t rowsMet) const;

private:
    friend class RowCursor;
    Row rowOf(const DataPage& page, std::size_t slot) const;
    Row follow(RowPointer pointer, RowPointer target) const;

    PageSource* source_;
    CatalogEntry entry_;
    TableDefinition definition_;
    UsageMap ownedPages_;
};

/// All live rows of a table in the order in which they lie: pages ascending, slots ascending.
///
///     for (RowCursor cursor(table); cursor.next();) use(cursor.row());
class RowCursor {
public:
    /// The table must outlive the cursor.
    explicit RowCursor(const Table& table) : table_(table) {}

    /// @return false behind the last row
    /// @throws RuntimeError (damage), also behind the last row if others are known to be lost
    bool next();

    const Row& row() const { return row_; }

private:
    bool nextRow();
    bool nextPage();

    const Table& table_;
    std::size_t rowsMet_ = 0;
    PageNumber nextPage_ = 0;
    DataPage page_;
    std::size_t nextSlot_ = 0;
    Row row_;
    std::unordered_set<std::uint32_t> movedTo_;  ///< data of moved rows seen so far: each belongs to one
};

/// @return nothing if the catalog has no such table
std::optional<Table> openTable(PageSource& source, base::TextView name);

/// A value of any column; long values are read whole.
base::Value valueOf(PageSource& source, const RowView& row, const Column& column);

}  // namespace jet
