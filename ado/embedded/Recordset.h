#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "ado/Ado.h"
#include "ado/embedded/PendingRow.h"
#include "base/Text.h"
#include "base/Value.h"
#include "jet/sql/ResultSet.h"
#include "jet/transaction/Database.h"
#include "jet/transaction/Transaction.h"

namespace ado::embedded {

/// The rows of a SELECT as they were when it was opened, whatever kind of cursor was requested. After that, reading
/// needs neither the file nor the connection; of later changes it shows only those made through this record set.
///
/// A row is added or changed in three steps. Only the first and the last use the file, each in a transaction of its
/// own; between them nothing is locked:
///
///     AddNew             takes the new row's auto number, so that it is known and nobody else gets it; raises an error
///                        at once if the table cannot be written at all
///     Field::setValue    converts to the column's type and keeps the value in memory
///     Update             stores the row, unless somebody else has changed or deleted it meanwhile
///
/// A pending row that is never stored by Update is lost with the record set; its number stays used. As in ADO, AddNew
/// and MoveNext first store a pending row.
class Recordset final : public ado::Recordset {
public:
    Recordset() = default;
    // Not copyable, because its fields refer to it.
    Recordset(const Recordset&) = delete;
    Recordset& operator=(const Recordset&) = delete;
    ~Recordset() override = default;

    /// @param connection  must be an ado::embedded::Connection (otherwise 3001) that is open (otherwise 3709)
    /// @param lockType    read-only and batch (there is no UpdateBatch) refuse changes with 3251
    /// @throws 3705 if it is already open; the engine's errors of the statement
    void Open(base::TextView source, ado::Connection& connection, CursorType cursorType, LockType lockType,
              std::int32_t options) override;
    std::int32_t State() const override { return rows_ ? adStateOpen : adStateClosed; }
    std::int32_t RecordCount() const override;
    /// False while a new row is pending, because that is the current row.
    bool isEOF() const override;
    void MoveNext() override;
    ado::Fields& Fields() override;

    /// @throws 3251, 3709 if the connection is closed; the engine's errors: in use, read-only, a table that it cannot
    /// write
    void AddNew() override;

    /// Does nothing if nothing was assigned. If it throws, nothing is stored and the row stays pending.
    /// @throws the same as AddNew; the row was changed or deleted by somebody else; the rules of columns, indexes and
    /// relationships
    void Update() override;

    /// @throws 3219 while a row is pending
    void Close() override;

private:
    class RowField final : public ado::Field {
    public:
        RowField(Recordset& rows, std::size_t column) : rows_(rows), column_(column) {}
        const jet::Column& column() const { return rows_.opened().column(column_); }
        base::Text Name() const override { return column().name; }
        base::Value Value() const override;
        void setValue(const base::Value& value) override;

    private:
        Recordset& rows_;
        std::size_t column_;
    };

    class RowFields final : public ado::Fields {
    public:
        explicit RowFields(Recordset& rows);
        std::int32_t Count() const override { return static_cast<std::int32_t>(fields_.size()); }
        ado::Field& Item(base::TextView name) override;
        ado::Field& Item(std::int32_t index) override;

    private:
        std::vector<RowField> fields_;
    };

    /// @throws 3704 if the record set is closed
    const jet::sql::ResultSet& opened() const;
    bool isNewRowPending() const { return pending_ && pending_->isNew(); }
    void requireUpdatable() const;
    std::shared_ptr<jet::Database> openDatabase() const;
    jet::RowPointer store(jet::TableWriter& writer) const;
    void requireSameColumns(const jet::TableDefinition& now) const;
    void requireUnchanged(const jet::TableWriter& writer, jet::RowPointer place) const;
    std::size_t rowCount() const { return opened().rowCount() + addedRows_; }
    jet::sql::ResultRow row(std::size_t row) const;

    base::Text table_;
    std::weak_ptr<jet::Database> database_;
    LockType lockType_ = LockType::adLockReadOnly;
    std::optional<jet::sql::ResultSet> rows_;
    std::optional<RowFields> fields_;
    std::map<std::size_t, jet::sql::ResultSet> written_;  ///< rows as stored by this record set, one in each
    std::size_t addedRows_ = 0;                           ///< they come after the others
    std::size_t current_ = 0;
    std::optional<PendingRow> pending_;
};

}  // namespace ado::embedded
