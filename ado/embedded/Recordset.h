#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "ado/Ado.h"
#include "base/Text.h"
#include "base/Value.h"
#include "jet/sql/ResultSet.h"

namespace ado::embedded {

/// The rows of a SELECT, as they were when it was opened, whatever kind of cursor was asked for. It depends
/// neither on the file nor on the connection any more.
///
/// Rows can be read, not changed.
class Recordset final : public ado::Recordset {
public:
    Recordset() = default;
    // Its fields refer to it.
    Recordset(const Recordset&) = delete;
    Recordset& operator=(const Recordset&) = delete;
    ~Recordset() override = default;

    /// @param connection  one of this engine's own (else 3001) that is open (else 3709)
    /// @throws 3705 if it is open already; the engine's errors of the statement
    void Open(base::TextView source, ado::Connection& connection, CursorType cursorType, LockType lockType,
              std::int32_t options) override;
    std::int32_t State() const override { return rows_ ? adStateOpen : adStateClosed; }
    std::int32_t RecordCount() const override;
    bool isEOF() const override;
    void MoveNext() override;
    ado::Fields& Fields() override;
    void AddNew() override { refuseChange(); }
    void Update() override { refuseChange(); }
    void Close() override;

private:
    class RowField final : public ado::Field {
    public:
        RowField(const Recordset& rows, std::size_t column) : rows_(rows), column_(column) {}
        const base::Text& columnName() const { return rows_.opened().column(column_).name; }
        base::Text Name() const override { return columnName(); }
        base::Value Value() const override;
        void setValue(const base::Value& value) override;

    private:
        const Recordset& rows_;
        std::size_t column_;
    };

    class RowFields final : public ado::Fields {
    public:
        explicit RowFields(const Recordset& rows);
        std::int32_t Count() const override { return static_cast<std::int32_t>(fields_.size()); }
        ado::Field& Item(base::TextView name) override;
        ado::Field& Item(std::int32_t index) override;

    private:
        std::vector<RowField> fields_;
    };

    /// @throws 3704 if the record set is closed
    const jet::sql::ResultSet& opened() const;
    [[noreturn]] void refuseChange() const;

    std::optional<jet::sql::ResultSet> rows_;
    std::optional<RowFields> fields_;
    std::size_t current_ = 0;
    LockType lockType_ = LockType::adLockReadOnly;
};

}  // namespace ado::embedded
