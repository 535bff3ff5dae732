#include "tests/comdouble/FieldObjects.h"

#include <memory>
#include <utility>

#include "tests/comdouble/Refusal.h"
#include "tests/comdouble/State.h"
#include "tests/comdouble/Variants.h"

namespace comdouble {

namespace {

enum Id : DISPID { kDefaultId = DISPID_VALUE, kCountId = 401, kNameId };

constexpr Member kCollectionMembers[] = {
    {kDefaultId, u"Item", DISPATCH_PROPERTYGET, 1, 1},
    {kCountId, u"Count", DISPATCH_PROPERTYGET, 0, 0},
};

constexpr Member kMembers[] = {
    {kDefaultId, u"Value", DISPATCH_PROPERTYGET | DISPATCH_PROPERTYPUT, 0, 0},
    {kNameId, u"Name", DISPATCH_PROPERTYGET, 0, 0},
};

}  // namespace

FieldsObject::FieldsObject(Ref<RecordsetObject> recordset)
    : AutomationObject(u"Fields", kCollectionMembers), recordset_(std::move(recordset)) {}

std::vector<std::size_t> FieldsObject::places() const {
    std::vector<std::size_t> found;
    if (!recordset_->isOpen()) return found;
    const Cursor& cursor = recordset_->opened();
    for (std::size_t place = 0; place < cursor.columnCount(); ++place)
        if (!base::equalsIgnoringAsciiCase(cursor.column(place).name, state().faults.missingField))
            found.push_back(place);
    return found;
}

VARIANT FieldsObject::call(DISPID id, const Arguments& arguments) {
    if (id == kCountId) return numberVariant(static_cast<std::int32_t>(places().size()));
    return objectVariant(std::make_unique<FieldObject>(recordset_, placeOf(arguments)).release());
}

std::size_t FieldsObject::placeOf(const Arguments& arguments) const {
    const auto all = places();
    const VARIANT wanted = arguments.at(0);
    if (V_VT(&wanted) == VT_BSTR) {
        const base::Text name = fromBstr(V_BSTR(&wanted));
        for (const std::size_t place : all)
            if (base::equalsIgnoringAsciiCase(recordset_->opened().column(place).name, name)) return place;
    } else if (const std::int32_t index = arguments.number(0);
               index >= 0 && static_cast<std::size_t>(index) < all.size()) {
        return all[static_cast<std::size_t>(index)];
    }
    throw adoError(AdoNumber::ItemNotFound);
}

FieldObject::FieldObject(Ref<RecordsetObject> recordset, std::size_t place)
    : AutomationObject(u"Field", kMembers), recordset_(std::move(recordset)), place_(place) {}

VARIANT FieldObject::call(DISPID id, const Arguments& /*arguments*/) {
    const Cursor& cursor = recordset_->opened();
    const base::Text& name = cursor.column(place_).name;
    if (id == kNameId) return textVariant(name);
    const base::Value value = cursor.value(place_);  // also where it delivers something else: it may not be there
    const auto odd = state().faults.oddValues.find(name);
    return odd != state().faults.oddValues.end() ? odd->second() : toVariant(value);
}

void FieldObject::put(DISPID /*id*/, const VARIANT& value) {
    recordset_->opened().assign(place_, fromVariant(value));
}

}  // namespace comdouble
