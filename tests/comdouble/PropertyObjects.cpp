#include "tests/comdouble/PropertyObjects.h"

#include <memory>
#include <utility>

#include "tests/comdouble/Refusal.h"
#include "tests/comdouble/State.h"
#include "tests/comdouble/Variants.h"

namespace comdouble {

namespace {

enum Id : DISPID { kDefaultId = DISPID_VALUE, kCountId = 201, kNameId };

constexpr Member kCollectionMembers[] = {
    {kDefaultId, u"Item", DISPATCH_PROPERTYGET, 1, 1},
    {kCountId, u"Count", DISPATCH_PROPERTYGET, 0, 0},
};

constexpr Member kMembers[] = {
    {kDefaultId, u"Value", DISPATCH_PROPERTYGET | DISPATCH_PROPERTYPUT, 0, 0},
    {kNameId, u"Name", DISPATCH_PROPERTYGET, 0, 0},
};

}  // namespace

PropertiesObject::PropertiesObject(Ref<ConnectionObject> connection)
    : AutomationObject(u"Properties", kCollectionMembers), connection_(std::move(connection)) {}

VARIANT PropertiesObject::call(DISPID id, const Arguments& arguments) {
    if (id == kCountId) return numberVariant(static_cast<std::int32_t>(count()));
    return objectVariant(std::make_unique<PropertyObject>(connection_, placeOf(arguments)).release());
}

std::size_t PropertiesObject::placeOf(const Arguments& arguments) const {
    const VARIANT wanted = arguments.at(0);
    for (std::size_t place = 0; place < count(); ++place)
        if (V_VT(&wanted) == VT_BSTR
                ? base::equalsIgnoringAsciiCase(ConnectionObject::propertyName(place), fromBstr(V_BSTR(&wanted)))
                : arguments.number(0) == static_cast<std::int32_t>(place))
            return place;
    throw adoError(AdoNumber::ItemNotFound);
}

PropertyObject::PropertyObject(Ref<ConnectionObject> connection, std::size_t place)
    : AutomationObject(u"Property", kMembers), connection_(std::move(connection)), place_(place) {}

VARIANT PropertyObject::call(DISPID id, const Arguments& /*arguments*/) {
    if (id == kNameId) return textVariant(ConnectionObject::propertyName(place_));
    return textVariant(connection_->property(place_));
}

void PropertyObject::put(DISPID /*id*/, const VARIANT& value) {
    const auto& refused = state().faults.properties;
    const auto ordered = refused.find(base::Text(ConnectionObject::propertyName(place_)));
    if (ordered != refused.end()) throw Ordered(ordered->second);
    if (V_VT(&value) != VT_BSTR) throw adoError(AdoNumber::DataConversion);
    connection_->setProperty(place_, fromBstr(V_BSTR(&value)));
}

}  // namespace comdouble
