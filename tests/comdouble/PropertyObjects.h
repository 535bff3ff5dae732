#pragma once

#include "tests/comdouble/ConnectionObject.h"
#include "tests/comdouble/NamedValues.h"
#include "tests/comdouble/Ref.h"

namespace comdouble {

/// The provider's properties of a connection; before the provider is named the data source alone. Keeps the connection alive.
class PropertiesObject final : public NamedValuesObject {
public:
    explicit PropertiesObject(Ref<ConnectionObject> connection);

protected:
    std::vector<base::Text> names() const override;
    std::unique_ptr<AutomationObject> item(std::size_t index) const override;

private:
    Ref<ConnectionObject> connection_;
};

/// One of them, a text.
class PropertyObject final : public NamedValueObject {
public:
    PropertyObject(Ref<ConnectionObject> connection, std::size_t place);

protected:
    base::Text name() const override;
    VARIANT value() const override;
    void put(DISPID id, const VARIANT& value) override;

private:
    Ref<ConnectionObject> connection_;
    std::size_t place_;
};

}  // namespace comdouble
