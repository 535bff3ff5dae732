#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "base/Text.h"
#include "base/Value.h"
#include "jet/Errors.h"
#include "jet/page/PageStore.h"
#include "jet/table/Table.h"

namespace jet {

/// A column's new value, of whatever type it comes; the column's number is Column::number.
struct Assignment {
    std::uint16_t column = 0;
    base::Value value;
};

/// A row's values, at the places of their columns' numbers: TableDefinition::columnsEver of them.
using RowOfValues = std::vector<base::Value>;

/// Adds, changes and removes rows of one table within one transaction, with everything that hangs on them: data pages,
/// long values, all indexes, counters, and the rows of other tables that relationships delete along.
///
///     Transaction transaction(database, WriteKind::Execute);
///     TableWriter writer(transaction, u"Benutzerkonto", WriteKind::Execute);
///     writer.update(row, {{{column->number, base::Text(u"Meier")}}});
///     transaction.commit();
///
/// Law: a call that throws has changed nothing, or has left half a change that must not be committed; the transaction
/// is dropped in either case. All rules of columns, indexes and relationships are checked before the first page is
/// changed. Of rows and views taken from table() before a call, those of pages that the call changed are void.
class TableWriter {
public:
    /// Reads what decides how the table is written; changes nothing.
    /// @param store  a transaction; must outlive the writer
    /// @throws RuntimeError: no such table, a system table, a table with replication or of a later version, damage
    TableWriter(PageStore& store, base::TextView tableName, WriteKind kind);
    ~TableWriter();
    TableWriter(const TableWriter&) = delete;
    TableWriter& operator=(const TableWriter&) = delete;

    /// The table as the transaction sees it. Its rows may be read, also between changes, but not while they are walked
    /// through: collect the rows first.
    const Table& table() const;

    /// The row, if it is (still) there: somebody else may have removed it, or a relationship in the same statement.
    std::optional<Row> find(RowPointer row) const;

    /// A row to be added, as it is shown before it is: its auto number, which is taken from the counter (committed
    /// at once, the number is never given again), defaults, false in yes/no columns, null elsewhere. Whatever will
    /// refuse every new row refuses it here, before the number is taken.
    /// @throws RuntimeError: a default or a rule is not understood, an index has other keys than ours, the numbers are
    ///         used up
    RowOfValues startRow();

    /// Adds a row that was started.
    /// @param assignments  what was assigned to it since; of two for one column the later one counts
    /// @throws RuntimeError: a rule of the columns, a unique or required index, a relationship refuses it; too long;
    ///         the file is full; something about the table is not understood
    RowPointer insert(const RowOfValues& started, std::span<const Assignment> assignments);

    /// Adds a row at once: what is not assigned has its default, and the auto number is the next one.
    /// @throws RuntimeError as above, and as startRow()
    RowPointer insert(std::span<const Assignment> assignments);

    /// Columns that are not assigned keep their bytes. Nothing is written if no byte of the row changes.
    /// @param row  one that is there
    /// @throws RuntimeError as insert(); an auto number is assigned; a relationship would have to change other rows
    void update(RowPointer row, std::span<const Assignment> assignments);

    /// Removes the row and those that relationships delete along, of this table and others.
    /// @param row  one that is there
    /// @throws RuntimeError if rows that refer to it refuse
    void remove(RowPointer row);

private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace jet
