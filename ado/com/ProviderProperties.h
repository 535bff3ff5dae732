#pragma once

#include <map>

#include "ado/Ado.h"
#include "ado/com/Object.h"
#include "base/Text.h"

namespace ado::com {

/// The properties that the provider gives a connection once the provider is set.
class ProviderProperties final : public ado::Properties {
public:
    /// @param connection  must outlive this object
    explicit ProviderProperties(const Object& connection) : connection_(connection) {}
    ProviderProperties(const ProviderProperties&) = delete;
    ProviderProperties& operator=(const ProviderProperties&) = delete;
    ~ProviderProperties() override = default;

    /// Asks the provider each time, because another provider has other properties.
    ado::Property& Item(base::TextView name) override;

private:
    class Entry final : public ado::Property {
    public:
        void refer(Object object) { object_ = std::move(object); }
        base::Value Value() const override;
        void setValue(const base::Value& value) override;

    private:
        Object object_;
    };

    const Object& connection_;
    std::map<base::Text, Entry> entries_;  ///< by the names as given; references to entries stay valid
};

}  // namespace ado::com
