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

/// A new value for a column, of any type. `column` is Column::number.
struct Assignment {
    std::uint16_t column = 0;
    base::Value value;
};

/// The values of a row, indexed by Column::number. There are TableDefinition::columnsEver of them.
using RowOfValues = std::vector<base::Value>;

/// Adds, changes and removes rows of one table within one transaction, and everything that belongs to them: data pages,
/// long values, all indexes, counters, and rows of other tables that a relationship deletes with them.
///
///     Transaction transaction(database);
///     TableWriter writer(transaction, u"Benutzerkonto");
///     writer.update(row, {{{column->number, base::Text(u"Meier")}}});
///     transaction.commit();
///
/// If a call throws, the caller must drop the transaction: the change may be incomplete. All rules of columns, indexes
/// and relationships are checked before the first page is changed. After a call, rows and views that were taken from
/// table() before must not be used if their pages were changed.
class TableWriter {
public:
    /// Reads what is needed to write the table; changes nothing.
    /// @param store  a transaction; must outlive the writer
    /// @throws RuntimeError: no such table, a system table, a table with replication or of a later version, damage
    TableWriter(PageStore& store, base::TextView tableName);
    ~TableWriter();
    TableWriter(const TableWriter&) = delete;
    TableWriter& operator=(const TableWriter&) = delete;

    /// The table with the changes of the transaction. Its rows may be read between changes. But do not change rows
    /// while a RowCursor is in use: collect their places first.
    const Table& table() const;

    /// The row if it (still) exists: another program may have removed it, or a relationship in the same statement.
    std::optional<Row> find(RowPointer row) const;

    /// The values of a new row before it is added: its auto number, defaults, false in yes/no columns, otherwise null.
    /// The auto number is taken from the counter; if the caller commits now, it is never used again. If the table
    /// cannot accept any new row, this throws before the number is taken.
    /// @throws RuntimeError: a default or a rule is not understood, the keys of an index differ from those of this
    /// engine,
    ///         there are no more auto numbers
    RowOfValues startRow();

    /// Adds a row that startRow() has prepared.
    /// @param assignments  the values assigned since; if a column has two, the later one is used
    /// @throws RuntimeError: a rule of a column, a unique or required index or a relationship refuses the row; it is
    /// too
    ///         long; the file is full; a feature of the table is not understood
    RowPointer insert(const RowOfValues& started, std::span<const Assignment> assignments);

    /// Adds a row in one step. Columns without an assignment get their defaults, an auto number the next number.
    /// @throws RuntimeError as above, and as startRow()
    RowPointer insert(std::span<const Assignment> assignments);

    /// Columns that are not assigned keep their bytes. Nothing is written if no byte of the row changes.
    /// @param row  must exist
    /// @throws RuntimeError as insert(); an auto number is assigned; a relationship would have to change other rows
    void update(RowPointer row, std::span<const Assignment> assignments);

    /// Removes the row and the rows of this and other tables that relationships delete with it.
    /// @param row  must exist
    /// @throws RuntimeError if other rows refer to it
    void remove(RowPointer row);

private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace jet
