#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <variant>

#include "base/Value.h"

namespace jet {

/// A number as statements compare it: by its value, whatever its type. Yes/no counts as -1 and 0, a date as its number
/// of days.
///
/// Whole numbers, money and decimals are compared exactly, whatever their length. If one side is a float or a double,
/// both sides are compared as doubles. For speed, money and whole numbers of up to fourteen digits are kept as one
/// integer, which counts ten-thousandths.
class Number {
public:
    /// @return nothing if the value is null or not a number
    static std::optional<Number> from(const base::Value& value);

    /// Unordered only if one side is a NaN.
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
