#pragma once

#include <cstddef>
#include <map>
#include <optional>

#include "base/Text.h"
#include "base/Value.h"
#include "jet/change/TableWriter.h"
#include "jet/sql/PendingRow.h"
#include "jet/sql/ResultSet.h"
#include "jet/sql/Statement.h"
#include "jet/transaction/Database.h"

namespace jet::sql {

/// The rows of a SELECT as they were when it was carried out, with a current row that can be changed. Reading needs the
/// file no more; of later changes the cursor shows only its own.
///
/// A row is added or changed in three steps. Only the first and the last use the file, each in a transaction of its
/// own; between them nothing is locked:
///
///     startRow   takes a new row's auto number, so that it is known and nobody else gets it; raises an error at once
///                if the table cannot be written at all
///     assign     converts to the column's type and keeps the value in memory
///     store      stores the row, unless somebody else has changed or deleted it meanwhile
class StaticCursor {
public:
    /// Stands on the first row.
    /// @throws RuntimeError: errors of parse() and executeSelect(); notUpdatable() if the statement is no SELECT
    StaticCursor(Database& database, base::TextView statement);
    // Not copyable, because the current row refers to it.
    StaticCursor(const StaticCursor&) = delete;
    StaticCursor& operator=(const StaticCursor&) = delete;
    ~StaticCursor() = default;

    std::size_t columnCount() const { return rows_.columnCount(); }
    const Column& column(std::size_t column) const { return rows_.column(column); }

    /// The rows of the SELECT and those that were added since.
    std::size_t rowCount() const { return rows_.rowCount() + addedRows_; }
    /// Whether there is no current row. A new row is the current one until it is stored, and after that.
    bool isAtEnd() const { return current_ == rowCount() && !(pending_ && pending_->isNew()); }
    /// There must be a current row, and it must not be pending.
    void next();

    /// Of the current row, which must exist; assigned values first.
    base::Value value(std::size_t column) const;

    /// Whether the current row has values that are not stored yet.
    bool isPending() const { return pending_.has_value(); }
    /// The current row, which must exist, becomes pending.
    /// @throws RuntimeError if the column cannot take the value, or counts by itself
    void assign(std::size_t column, const base::Value& value);
    /// Starts a new row and makes it the current one. No row may be pending.
    /// @throws RuntimeError: the file is in use or read-only; the table or its columns were changed; TableWriter
    void startRow(Database& database);
    /// Stores the pending row. If it throws, nothing is stored and the row stays pending.
    /// @throws RuntimeError as startRow(); rowChanged(), rowDeleted()
    void store(Database& database);

private:
    StaticCursor(Database& database, const Select& select);
    const ResultRow& row() const;
    RowPointer put(TableWriter& writer) const;
    void requireSameColumns(const TableDefinition& now) const;
    void requireUnchanged(const TableWriter& writer, RowPointer place) const;

    base::Text table_;
    ResultSet rows_;
    std::map<std::size_t, ResultSet> written_;  ///< rows as stored by this cursor, one in each
    std::size_t addedRows_ = 0;                 ///< they come after the others
    std::size_t current_ = 0;
    mutable std::optional<ResultRow> row_;  ///< the current one, once somebody has asked for it
    std::optional<PendingRow> pending_;
};

}  // namespace jet::sql
