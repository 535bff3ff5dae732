#pragma once

#include <array>
#include <cstdint>
#include <variant>
#include <vector>

#include "base/Text.h"

/// A field's value as the account file and ADO give it: one alternative for each column type, and null.
namespace base {

struct Null {
    friend bool operator==(const Null&, const Null&) = default;
};

/// Fixed-point money: the amount times 10,000.
struct Currency {
    std::int64_t tenThousandths = 0;
    friend bool operator==(const Currency&, const Currency&) = default;
};

/// Days since 1899-12-30 00:00 local time. In negative values, too, the fraction counts forward from midnight: -1.25 is
/// 1899-12-29 06:00.
struct Date {
    double days = 0;
    friend bool operator==(const Date&, const Date&) = default;
};

/// The sixteen bytes in the order in which the file stores them (three little-endian integers, then eight single
/// bytes).
struct Guid {
    std::array<std::uint8_t, 16> bytes{};
    friend bool operator==(const Guid&, const Guid&) = default;
};

/// A decimal number: magnitude / 10^scale, and a separate sign.
struct Decimal {
    bool negative = false;
    std::uint8_t scale = 0;                    ///< 0 to 28
    std::array<std::uint32_t, 4> magnitude{};  ///< least significant word first
    friend bool operator==(const Decimal&, const Decimal&) = default;
};

using Bytes = std::vector<std::uint8_t>;

using Value = std::variant<Null, bool, std::uint8_t, std::int16_t, std::int32_t, Currency, float, double, Date, Text,
                           Bytes, Guid, Decimal>;

inline bool isNull(const Value& value) {
    return std::holds_alternative<Null>(value);
}

}  // namespace base
