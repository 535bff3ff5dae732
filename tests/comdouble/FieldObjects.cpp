#include "tests/comdouble/FieldObjects.h"

#include <utility>

#include "tests/comdouble/State.h"
#include "tests/comdouble/Variants.h"

namespace comdouble {

FieldsObject::FieldsObject(Ref<RecordsetObject> recordset)
    : NamedValuesObject(u"Fields"), recordset_(std::move(recordset)) {}

std::vector<std::size_t> FieldsObject::places() const {
    std::vector<std::size_t> found;
    if (!recordset_->isOpen()) return found;
    const Cursor& cursor = recordset_->opened();
    for (std::size_t place = 0; place < cursor.columnCount(); ++place)
        if (!base::equalsIgnoringAsciiCase(cursor.column(place).name, state().faults.missingField))
            found.push_back(place);
    return found;
}

std::vector<base::Text> FieldsObject::names() const {
    std::vector<base::Text> all;
    for (const std::size_t place : places())
        all.push_back(recordset_->opened().column(place).name);
    return all;
}

std::unique_ptr<AutomationObject> FieldsObject::item(std::size_t index) const {
    return std::make_unique<FieldObject>(recordset_, places()[index]);
}

FieldObject::FieldObject(Ref<RecordsetObject> recordset, std::size_t place)
    : NamedValueObject(u"Field"), recordset_(std::move(recordset)), place_(place) {}

base::Text FieldObject::name() const {
    return recordset_->opened().column(place_).name;
}

VARIANT FieldObject::value() const {
    const base::Value value =
        recordset_->opened().value(place_);  // also where something else comes: it may not be there
    const auto odd = state().faults.oddValues.find(name());
    return odd != state().faults.oddValues.end() ? odd->second() : toVariant(value);
}

void FieldObject::put(DISPID /*id*/, const VARIANT& value) {
    recordset_->opened().assign(place_, fromVariant(value));
}

}  // namespace comdouble
