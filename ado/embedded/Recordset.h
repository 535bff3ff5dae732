#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

#include "ado/Ado.h"
#include "base/Text.h"
#include "base/Value.h"
#include "jet/sql/StaticCursor.h"
#include "jet/transaction/Database.h"

namespace ado::embedded {

/// ADO's record set over the engine's static cursor, whatever kind of cursor was requested. After Open, reading needs
/// neither the file nor the connection. AddNew, Field::setValue and Update are the cursor's startRow, assign and store.
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
        base::Text Name() const override { return rows_.opened().column(column_).name; }
        base::Value Value() const override;
        void setValue(const base::Value& value) override;

    private:
        Recordset& rows_;
        std::size_t column_;
    };

    class RowFields final : public ado::Fields {
    public:
        RowFields(Recordset& rows, std::size_t count);
        std::int32_t Count() const override { return static_cast<std::int32_t>(fields_.size()); }
        ado::Field& Item(base::TextView name) override;
        ado::Field& Item(std::int32_t index) override;

    private:
        std::vector<RowField> fields_;
    };

    /// @throws 3704 if the record set is closed
    const jet::sql::StaticCursor& opened() const;
    /// @throws 3251 as well
    jet::sql::StaticCursor& updatable();
    std::shared_ptr<jet::Database> openDatabase() const;

    std::weak_ptr<jet::Database> database_;
    LockType lockType_ = LockType::adLockReadOnly;
    std::optional<jet::sql::StaticCursor> rows_;
    std::optional<RowFields> fields_;
};

}  // namespace ado::embedded
