#pragma once

#include <unordered_set>

#include "base/Text.h"
#include "base/Value.h"
#include "jet/page/DataPage.h"
#include "jet/page/PageSource.h"
#include "jet/page/UsageMap.h"
#include "jet/table/CatalogEntry.h"
#include "jet/table/PropertyBlob.h"
#include "jet/table/RowCodec.h"
#include "jet/table/TableDefinition.h"

namespace jet {

/// A row at its place in the file. Keeps its page in memory.
struct Row {
    RowPointer pointer;  ///< its identity, even if its data was moved elsewhere
    RowView view;
    PageView page;
};

/// A table as one operation sees it. It keeps no lock and no pages.
class Table {
public:
    /// @param source  must outlive the table; the table must outlive its rows
    /// @throws RuntimeError (damage)
    Table(PageSource& source, CatalogEntry entry);

    const base::Text& name() const { return entry_.name; }
    const CatalogEntry& entry() const { return entry_; }
    const TableDefinition& definition() const { return definition_; }
    PageSource& source() const { return *source_; }

    /// The pages that hold the table's rows.
    const UsageMap& ownedPages() const { return ownedPages_; }

    /// The live row at this place; its data may have moved.
    /// @throws RuntimeError (damage) if there is no such row, because the place was read from the file
    Row rowAt(RowPointer pointer) const;

    /// The value of a column in the row. It may be null. Long values are read completely.
    base::Value value(const RowView& row, const Column& column) const;

    /// The properties of the table and its columns. Every call reads them again.
    PropertyBlob properties() const;

    /// Looks for rows that a scan has missed because the map of owned pages lacks their page. If the scan met as many
    /// rows as the definition counts, this costs nothing. Otherwise it goes through an index, or, without an index,
    /// through all pages that name this table as their owner.
    /// @param rowsMet  number of rows in a scan up to the end
    /// @throws RuntimeError (damage) if there are missed rows
    void requireAllMet(std::size_t rowsMet) const;

private:
    friend class RowCursor;
    Row rowOf(const DataPage& page, std::size_t slot) const;

    PageSource* source_;
    CatalogEntry entry_;
    TableDefinition definition_;
    UsageMap ownedPages_;
};

/// All live rows of a table in the order of their places: pages ascending, then slots ascending.
///
///     for (RowCursor cursor(table); cursor.next();) use(cursor.row());
class RowCursor {
public:
    /// The table must outlive the cursor.
    explicit RowCursor(const Table& table) : table_(table) {}

    /// @return false after the last row
    /// @throws RuntimeError (damage), also after the last row if rows are known to be lost
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
    std::unordered_set<std::uint32_t> movedTo_;  ///< data of moved rows met so far: each belongs to one row
};

/// The value of any column; long values are read completely.
base::Value valueOf(PageSource& source, const RowView& row, const Column& column);

}  // namespace jet
