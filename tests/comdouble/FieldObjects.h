#pragma once

#include "tests/comdouble/NamedValues.h"
#include "tests/comdouble/RecordsetObject.h"
#include "tests/comdouble/Ref.h"

namespace comdouble {

/// The columns of a record set; none while it is closed. Keeps the record set alive.
class FieldsObject final : public NamedValuesObject {
public:
    explicit FieldsObject(Ref<RecordsetObject> recordset);

protected:
    std::vector<base::Text> names() const override;
    std::unique_ptr<AutomationObject> item(std::size_t index) const override;

private:
    std::vector<std::size_t> places() const;

    Ref<RecordsetObject> recordset_;
};

/// One of them; its value follows the current row. Of no use once its record set is closed (3704).
class FieldObject final : public NamedValueObject {
public:
    FieldObject(Ref<RecordsetObject> recordset, std::size_t place);

protected:
    base::Text name() const override;
    VARIANT value() const override;
    void put(DISPID id, const VARIANT& value) override;

private:
    Ref<RecordsetObject> recordset_;
    std::size_t place_;
};

}  // namespace comdouble
