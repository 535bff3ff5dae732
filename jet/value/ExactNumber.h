#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "base/Value.h"

namespace jet {

/// A decimal number of any length, so that a conversion loses nothing but what the column does not take: sign, digits,
/// and how many of them stand behind the point. Rounds half to even.
class ExactNumber {
public:
    explicit ExactNumber(std::int64_t value, std::uint8_t scale = 0);
    explicit ExactNumber(const base::Decimal& decimal);

    /// A number as statements write it: sign, digits, a decimal point, an exponent.
    /// @return nothing for any other text, and for exponents beyond a double's
    static std::optional<ExactNumber> fromText(std::string_view text);

    /// The shortest number that reads as this double.
    /// @return nothing if it is not finite
    static std::optional<ExactNumber> fromDouble(double value);

    bool isZero() const { return digits_.empty(); }
    /// Whether so many digits behind the point are enough.
    bool hasScale(int scale) const { return scale_ <= scale; }
    double toDouble() const;

    /// The number times 10^scale. Nothing if that is beyond 64 bits.
    std::optional<std::int64_t> scaledTo(int scale) const;

    /// As scaledTo(), but nothing if that is no whole number.
    std::optional<std::int64_t> exactlyScaledTo(int scale) const {
        return hasScale(scale) ? scaledTo(scale) : std::nullopt;
    }

    /// Nothing if it has more digits than that.
    std::optional<base::Decimal> decimal(std::uint8_t precision, std::uint8_t scale) const;

    /// Nothing if there is a fraction.
    std::optional<std::string> wholeText() const;

private:
    ExactNumber() = default;
    ExactNumber rounded(int scale) const;
    void normalise();

    bool negative_ = false;
    std::string digits_;  ///< '0' to '9', without zeros at either end; empty for zero
    int scale_ = 0;       ///< value = digits / 10^scale; may be negative
};

}  // namespace jet
