#pragma once

#include <cstddef>

#include "tests/comdouble/AutomationObject.h"
#include "tests/comdouble/ConnectionObject.h"
#include "tests/comdouble/Ref.h"

namespace comdouble {

/// The provider's properties of a connection; none before the provider is named. Keeps the connection alive.
class PropertiesObject final : public AutomationObject {
public:
    explicit PropertiesObject(Ref<ConnectionObject> connection);

protected:
    VARIANT call(DISPID id, const Arguments& arguments) override;

private:
    std::size_t count() const { return connection_->hasProvider() ? ConnectionObject::kPropertyCount : 0; }
    std::size_t placeOf(const Arguments& arguments) const;

    Ref<ConnectionObject> connection_;
};

/// One of them, a text.
class PropertyObject final : public AutomationObject {
public:
    PropertyObject(Ref<ConnectionObject> connection, std::size_t place);

protected:
    VARIANT call(DISPID id, const Arguments& arguments) override;
    void put(DISPID id, const VARIANT& value) override;

private:
    Ref<ConnectionObject> connection_;
    std::size_t place_;
};

}  // namespace comdouble
