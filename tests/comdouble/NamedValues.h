#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "tests/comdouble/AutomationObject.h"

namespace comdouble {

/// A collection of values that have names, such as a record set's fields. Its items are found by their name, in
/// letters of any case, or by their index from 0.
class NamedValuesObject : public AutomationObject {
protected:
    explicit NamedValuesObject(base::TextView className);

    virtual std::vector<base::Text> names() const = 0;
    /// @param index  of its name
    virtual std::unique_ptr<AutomationObject> item(std::size_t index) const = 0;

private:
    VARIANT call(DISPID id, const Arguments& arguments) final;
    std::size_t indexOf(const Arguments& arguments) const;
};

/// One of them. What is put is its value: it has nothing else to put.
class NamedValueObject : public AutomationObject {
protected:
    explicit NamedValueObject(base::TextView className);

    virtual base::Text name() const = 0;
    /// For the caller to clear.
    virtual VARIANT value() const = 0;

private:
    VARIANT call(DISPID id, const Arguments& arguments) final;
};

}  // namespace comdouble
