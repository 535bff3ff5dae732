#include "jet/expression/Number.h"

#include <array>
#include <cstddef>
#include <type_traits>

#include "jet/value/ExactNumber.h"

namespace jet {

namespace {

constexpr std::int64_t kTenThousand = 10000;

/// Has room for 128 bits times 10^255: a damaged file may have any scale up to 255.
using Wide = std::array<std::uint32_t, 4 + 27>;

Wide magnitudeTimesTenTo(const base::Decimal& decimal, unsigned power) {
    Wide wide{};
    for (std::size_t i = 0; i < decimal.magnitude.size(); ++i)
        wide[i] = decimal.magnitude[i];
    for (; power > 0; --power)
        appendDigit(wide, 0);
    return wide;
}

bool isZeroMagnitude(const base::Decimal& decimal) {
    return decimal.magnitude == std::array<std::uint32_t, 4>{};
}

std::strong_ordering compareExactly(const base::Decimal& a, const base::Decimal& b) {
    const bool aNegative = a.negative && !isZeroMagnitude(a);
    const bool bNegative = b.negative && !isZeroMagnitude(b);
    if (aNegative != bNegative) return aNegative ? std::strong_ordering::less : std::strong_ordering::greater;
    const unsigned scale = a.scale > b.scale ? a.scale : b.scale;
    const Wide left = magnitudeTimesTenTo(a, scale - a.scale);
    const Wide right = magnitudeTimesTenTo(b, scale - b.scale);
    for (std::size_t i = left.size(); i > 0; --i) {
        if (left[i - 1] == right[i - 1]) continue;
        return (left[i - 1] < right[i - 1]) != aNegative ? std::strong_ordering::less : std::strong_ordering::greater;
    }
    return std::strong_ordering::equal;
}

/// A decimal of up to 14 digits, at most four of them after the point, in ten-thousandths.
std::optional<std::int64_t> tenThousandthsOf(const base::Decimal& decimal) {
    if (decimal.scale > 4 || decimal.magnitude[1] > 0x1FFFF || decimal.magnitude[2] != 0 || decimal.magnitude[3] != 0)
        return std::nullopt;  // so the rest is below 2^49, and times 10^4 below 2^63
    std::int64_t number = (static_cast<std::int64_t>(decimal.magnitude[1]) << 32U) | decimal.magnitude[0];
    for (unsigned scale = decimal.scale; scale < 4; ++scale)
        number *= 10;
    return decimal.negative ? -number : number;
}

}  // namespace

std::optional<Number> Number::from(const base::Value& value) {
    const auto form = [](const auto& held) -> std::optional<Form> {
        using Held = std::decay_t<decltype(held)>;
        if constexpr (std::is_same_v<Held, bool>) {
            return Form(held ? -kTenThousand : std::int64_t{0});
        } else if constexpr (std::is_integral_v<Held>) {
            return Form(held * kTenThousand);
        } else if constexpr (std::is_floating_point_v<Held>) {
            return Form{static_cast<double>(held)};
        } else if constexpr (std::is_same_v<Held, base::Currency>) {
            return Form(held.tenThousandths);
        } else if constexpr (std::is_same_v<Held, base::Date>) {
            return Form(held.days);
        } else if constexpr (std::is_same_v<Held, base::Decimal>) {
            if (const auto short_ = tenThousandthsOf(held)) return Form(*short_);
            return Form(held);
        } else {
            return std::nullopt;
        }
    };
    if (const auto found = std::visit(form, value)) return Number(*found);
    return std::nullopt;
}

std::partial_ordering Number::compare(const Number& a, const Number& b) {
    const auto* left = std::get_if<std::int64_t>(&a.form_);
    const auto* right = std::get_if<std::int64_t>(&b.form_);
    if (left != nullptr && right != nullptr) return *left <=> *right;
    const bool floating = std::holds_alternative<double>(a.form_) || std::holds_alternative<double>(b.form_);
    if (floating) return a.toDouble() <=> b.toDouble();
    return compareExactly(a.toDecimal(), b.toDecimal());
}

bool Number::isZero() const {
    if (const auto* decimal = std::get_if<base::Decimal>(&form_)) return isZeroMagnitude(*decimal);
    if (const auto* floating = std::get_if<double>(&form_)) return *floating == 0;
    return std::get<std::int64_t>(form_) == 0;
}

/// The nearest double. So a condition with the digits of a stored double finds it.
double Number::toDouble() const {
    if (const auto* floating = std::get_if<double>(&form_)) return *floating;
    const base::Decimal decimal = toDecimal();
    // If both numbers are exact as doubles, their quotient is rounded only once, so it is the nearest double.
    constexpr std::uint32_t kMostHigh = 1U << 21U;  // a double has 53 bits
    constexpr std::uint8_t kMostScale = 22;         // 10^22 is the last power of ten that is exact
    const bool isShort = decimal.magnitude[3] == 0 && decimal.magnitude[2] == 0 && decimal.magnitude[1] < kMostHigh;
    if (!isShort || decimal.scale > kMostScale) return ExactNumber(decimal).toDouble();
    double number = 4294967296.0 * decimal.magnitude[1] + decimal.magnitude[0];
    double power = 1;
    for (unsigned i = 0; i < decimal.scale; ++i)
        power *= 10;
    number /= power;
    return decimal.negative ? -number : number;
}

base::Decimal Number::toDecimal() const {
    if (const auto* decimal = std::get_if<base::Decimal>(&form_)) return *decimal;
    const std::int64_t whole = std::get<std::int64_t>(form_);
    const auto magnitude = whole < 0 ? 0 - static_cast<std::uint64_t>(whole) : static_cast<std::uint64_t>(whole);
    base::Decimal decimal;
    decimal.negative = whole < 0;
    decimal.scale = 4;
    decimal.magnitude = {static_cast<std::uint32_t>(magnitude), static_cast<std::uint32_t>(magnitude >> 32U), 0, 0};
    return decimal;
}

}  // namespace jet
