#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "base/Value.h"

namespace jet {

/// A decimal number of any length: sign, digits, and the number of digits after the point. So a conversion loses only
/// what the column cannot hold. Rounds half to even.
class ExactNumber {
public:
    explicit ExactNumber(std::int64_t value, std::uint8_t scale = 0);
    explicit ExactNumber(const base::Decimal& decimal);

    /// Reads a number as statements write it: sign, digits, decimal point, exponent.
    /// @return nothing for any other text, or if the exponent is larger than that of any double
    static std::optional<ExactNumber> fromText(std::string_view text);

    /// The number with the fewest digits that reads as this double.
    /// @return nothing if the value is not finite
    static std::optional<ExactNumber> fromDouble(double value);

    bool isZero() const { return digits_.empty(); }
    /// Whether `scale` digits after the point are enough for the number.
    bool hasScale(int scale) const { return scale_ <= scale; }
    double toDouble() const;

    /// The number times 10^scale, rounded. Nothing if that does not fit into 64 bits.
    std::optional<std::int64_t> scaledTo(int scale) const;

    /// Like scaledTo(), but nothing if the result is not a whole number.
    std::optional<std::int64_t> exactlyScaledTo(int scale) const {
        return hasScale(scale) ? scaledTo(scale) : std::nullopt;
    }

    /// Nothing if the number has more digits than `precision`.
    std::optional<base::Decimal> decimal(std::uint8_t precision, std::uint8_t scale) const;

    /// Nothing if the number has a fraction.
    std::optional<std::string> wholeText() const;

private:
    ExactNumber() = default;
    ExactNumber rounded(int scale) const;
    void normalise();

    bool negative_ = false;
    std::string digits_;  ///< '0' to '9', without zeros at the beginning or end; empty for zero
    int scale_ = 0;       ///< value = digits / 10^scale; may be negative
};

/// The decimal digits of the magnitude, without leading zeros; empty for zero.
std::string digitsOf(const base::Decimal& decimal);

/// Appends a decimal digit to a number in words, the least significant word first. An overflow is ignored.
template <std::size_t Count>
void appendDigit(std::array<std::uint32_t, Count>& words, unsigned digit) {
    std::uint64_t carry = digit;
    for (std::uint32_t& word : words) {
        carry += std::uint64_t{word} * 10;
        word = static_cast<std::uint32_t>(carry);
        carry >>= 32U;
    }
}

}  // namespace jet
