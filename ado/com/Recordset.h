#pragma once

#include <map>
#include <optional>

#include "ado/Ado.h"
#include "ado/com/Object.h"
#include "base/Text.h"

namespace ado::com {

/// ADO's Recordset. Its fields are fetched once after Open; after that they follow the current row by themselves.
class Recordset final : public ado::Recordset {
public:
    explicit Recordset(const CLSID& classId) : object_(classId) {}

    /// @param connection  must be an ado::com::Connection
    void Open(base::TextView source, ado::Connection& connection, CursorType cursorType, LockType lockType,
              std::int32_t options) override;
    std::int32_t State() const override;
    std::int32_t RecordCount() const override;
    bool isEOF() const override;
    void MoveNext() override;
    ado::Fields& Fields() override;
    void AddNew() override;
    void Update() override;
    void Close() override;

private:
    class RowField final : public ado::Field {
    public:
        explicit RowField(IDispatch* object) : object_(object) {}
        base::Text Name() const override;
        base::Value Value() const override;
        void setValue(const base::Value& value) override;

    private:
        Object object_;
    };

    class RowFields final : public ado::Fields {
    public:
        explicit RowFields(IDispatch* object) : object_(object) {}
        std::int32_t Count() const override;
        ado::Field& Item(base::TextView name) override;
        ado::Field& Item(std::int32_t index) override;

    private:
        Object object_;
        std::map<base::Text, RowField, std::less<>> byName_;  ///< by the names as given
        std::map<std::int32_t, RowField> byIndex_;
    };

    Object object_;
    std::optional<RowFields> fields_;  // declared last, so that it is released first
};

}  // namespace ado::com
