#pragma once

#include <cstddef>
#include <vector>

#include "tests/comdouble/AutomationObject.h"
#include "tests/comdouble/RecordsetObject.h"
#include "tests/comdouble/Ref.h"

namespace comdouble {

/// The columns of a record set; none while it is closed. Keeps the record set alive.
class FieldsObject final : public AutomationObject {
public:
    explicit FieldsObject(Ref<RecordsetObject> recordset);

protected:
    VARIANT call(DISPID id, const Arguments& arguments) override;

private:
    std::vector<std::size_t> places() const;
    std::size_t placeOf(const Arguments& arguments) const;

    Ref<RecordsetObject> recordset_;
};

/// One of them; its value follows the current row. Of no use once its record set is closed (3704).
class FieldObject final : public AutomationObject {
public:
    FieldObject(Ref<RecordsetObject> recordset, std::size_t place);

protected:
    VARIANT call(DISPID id, const Arguments& arguments) override;
    void put(DISPID id, const VARIANT& value) override;

private:
    Ref<RecordsetObject> recordset_;
    std::size_t place_;
};

}  // namespace comdouble
