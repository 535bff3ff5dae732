#pragma once

#include "ado/Ado.h"
#include "ado/com/Object.h"
#include "ado/com/ProviderProperties.h"
#include "base/Text.h"

namespace ado::com {

/// ADO's Connection. Only ADO and the provider decide what is refused, and when.
class Connection final : public ado::Connection {
public:
    explicit Connection(const CLSID& classId) : object_(classId), properties_(object_) {}

    base::Text Provider() const override;
    void setProvider(base::TextView name) override;
    ado::Properties& Properties() override { return properties_; }
    void Open(base::TextView connectionString, base::TextView userId, base::TextView password,
              std::int32_t options) override;
    std::int32_t State() const override;
    void Close() override;
    void Execute(base::TextView commandText) override;

    /// For opening a record set on this connection.
    const Object& object() const { return object_; }

private:
    Object object_;
    ProviderProperties properties_;  // declared last, so that it is released first
};

}  // namespace ado::com
