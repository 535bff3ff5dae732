#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <variant>

#include "base/Value.h"

namespace jet {

/// A number as statements compare it: by its value, whatever type it comes from. Yes/no counts as -1 and 0,
/// a date as its days.
///
/// Whole numbers, money and decimals compare exactly with each other, however long they are; as soon as
/// a float or double takes part, both sides are compared as doubles. Money and whole numbers of up to
/// fourteen digits take the fast way: one integer of ten-thousandths.
class Number {
public:
    /// @return nothing if the value is null or no number
    static std::optional<Number> from(const base::Value& value);

    /// Without an order only where a NaN takes part.
    static std::partial_ordering compare(const Number& a, const Number& b);

    bool isZero() const;

private:
    using Form = std::variant<std::int64_t, double, base::Decimal>;  ///< an int64_t counts ten-thousandths

    explicit Number(Form form) : form_(form) {}
    double toDouble() const;
    base::Decimal toDecimal() const;

    Form form_;
};

}  // namespace jet
