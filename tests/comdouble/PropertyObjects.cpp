#include "tests/comdouble/PropertyObjects.h"

#include <utility>

#include "tests/comdouble/Refusal.h"
#include "tests/comdouble/State.h"
#include "tests/comdouble/Variants.h"

namespace comdouble {

PropertiesObject::PropertiesObject(Ref<ConnectionObject> connection)
    : NamedValuesObject(u"Properties"), connection_(std::move(connection)) {}

std::vector<base::Text> PropertiesObject::names() const {
    std::vector<base::Text> all;
    const std::size_t known = connection_->hasProvider() ? ConnectionObject::kPropertyCount : 1;
    for (std::size_t place = 0; place < known; ++place)
        all.emplace_back(ConnectionObject::propertyName(place));
    return all;
}

std::unique_ptr<AutomationObject> PropertiesObject::item(std::size_t index) const {
    return std::make_unique<PropertyObject>(connection_, index);
}

PropertyObject::PropertyObject(Ref<ConnectionObject> connection, std::size_t place)
    : NamedValueObject(u"Property"), connection_(std::move(connection)), place_(place) {}

base::Text PropertyObject::name() const {
    return base::Text(ConnectionObject::propertyName(place_));
}

VARIANT PropertyObject::value() const {
    return textVariant(connection_->property(place_));
}

void PropertyObject::put(DISPID /*id*/, const VARIANT& value) {
    const auto& refused = state().faults.properties;
    const auto ordered = refused.find(name());
    if (ordered != refused.end()) throw Ordered(ordered->second);
    if (V_VT(&value) != VT_BSTR) throw adoError(AdoNumber::DataConversion);
    connection_->setProperty(place_, textOf(value));
}

}  // namespace comdouble
