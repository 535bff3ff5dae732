#include "tests/comdouble/NamedValues.h"

#include "tests/comdouble/Refusal.h"
#include "tests/comdouble/Variants.h"

namespace comdouble {

namespace {

enum : DISPID { kDefaultId = DISPID_VALUE, kCountId = 201, kNameId };

constexpr Member kCollectionMembers[] = {
    {kDefaultId, u"Item", DISPATCH_PROPERTYGET, 1, 1},
    {kCountId, u"Count", DISPATCH_PROPERTYGET, 0, 0},
};

constexpr Member kValueMembers[] = {
    {kDefaultId, u"Value", DISPATCH_PROPERTYGET | DISPATCH_PROPERTYPUT, 0, 0},
    {kNameId, u"Name", DISPATCH_PROPERTYGET, 0, 0},
};

}  // namespace

NamedValuesObject::NamedValuesObject(base::TextView className) : AutomationObject(className, kCollectionMembers) {}

VARIANT NamedValuesObject::call(DISPID id, const Arguments& arguments) {
    if (id == kCountId) return numberVariant(static_cast<std::int32_t>(names().size()));
    return objectVariant(item(indexOf(arguments)).release());
}

std::size_t NamedValuesObject::indexOf(const Arguments& arguments) const {
    const auto all = names();
    const VARIANT wanted = arguments.at(0);
    for (std::size_t index = 0; index < all.size(); ++index)
        if (V_VT(&wanted) == VT_BSTR ? base::equalsIgnoringAsciiCase(all[index], textOf(wanted))
                                     : arguments.number(0) == static_cast<std::int32_t>(index))
            return index;
    throw adoError(AdoNumber::ItemNotFound);
}

NamedValueObject::NamedValueObject(base::TextView className) : AutomationObject(className, kValueMembers) {}

VARIANT NamedValueObject::call(DISPID id, const Arguments& /*arguments*/) {
    return id == kNameId ? textVariant(name()) : value();
}

}  // namespace comdouble
