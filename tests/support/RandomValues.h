#pragma once

#include <algorithm>
#include <compare>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <limits>
#include <optional>
#include <random>
#include <string>
#include <type_traits>

#include "base/Value.h"
#include "jet/value/Column.h"
#include "jet/value/SortKey.h"

namespace test {

inline std::string printed(const char* format, double number) {
    char text[40];
    std::snprintf(text, sizeof text, format, number);
    return text;
}

/// A value as it is written in a statement.
/// @return nothing for bytes, which cannot be written in a statement
inline std::optional<base::Text> literalOf(const base::Value& value) {
    const auto scaled = [](bool negative, std::string digits, std::size_t scale) {
        if (digits.size() <= scale) digits.insert(0, scale + 1 - digits.size(), '0');
        if (scale > 0) digits.insert(digits.size() - scale, ".");
        return base::fromUtf8((negative ? "-" : "") + digits);
    };
    return std::visit(
        [&](const auto& held) -> std::optional<base::Text> {
            using Held = std::decay_t<decltype(held)>;
            if constexpr (std::is_same_v<Held, base::Null>) return u"NULL";
            if constexpr (std::is_same_v<Held, bool>) return held ? u"TRUE" : u"FALSE";
            if constexpr (std::is_same_v<Held, base::Text>) {
                base::Text quoted = u"'";
                for (const char16_t unit : held)
                    quoted.append(unit == u'\'' ? 2 : 1, unit);
                return quoted + u"'";
            }
            if constexpr (std::is_same_v<Held, base::Currency>) {
                const auto amount = static_cast<std::uint64_t>(held.tenThousandths);
                return scaled(held.tenThousandths < 0, std::to_string(held.tenThousandths < 0 ? 0 - amount : amount),
                              4);
            }
            if constexpr (std::is_same_v<Held, base::Decimal>)
                return scaled(held.negative, std::to_string(held.magnitude[0]), held.scale);
            if constexpr (std::is_floating_point_v<Held>) return base::fromUtf8(printed("%.17g", held));
            if constexpr (std::is_same_v<Held, base::Date>)
                return held.days == 0 ? u"#1899-12-30#" : base::fromUtf8(printed("%.17g", held.days));
            if constexpr (std::is_same_v<Held, base::Guid>) {
                constexpr std::size_t kOrder[] = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};
                std::string digits;
                for (const std::size_t at : kOrder) {
                    char pair[3];
                    std::snprintf(pair, sizeof pair, "%02X", held.bytes[at]);
                    digits += pair;
                }
                for (const std::size_t dash : {20U, 16U, 12U, 8U})
                    digits.insert(dash, "-");
                return u"{guid {" + base::fromUtf8(digits) + u"}}";
            }
            if constexpr (std::is_integral_v<Held>) return base::decimal(held);
            return std::nullopt;
        },
        value);
}

/// The order of two values of one column; null comes first.
inline bool isLess(const base::Value& a, const base::Value& b) {
    if (base::isNull(a) || base::isNull(b)) return base::isNull(a) && !base::isNull(b);
    return std::visit(
        [&](const auto& left) -> bool {
            using Held = std::decay_t<decltype(left)>;
            const auto& right = std::get<Held>(b);
            if constexpr (std::is_same_v<Held, bool>)
                return left && !right;  // true is -1, false is 0
            else if constexpr (std::is_arithmetic_v<Held> || std::is_same_v<Held, base::Bytes>)
                return left < right;
            else if constexpr (std::is_same_v<Held, base::Text>)
                return std::is_lt(jet::compareTexts(left, right));
            else if constexpr (std::is_same_v<Held, base::Currency>)
                return left.tenThousandths < right.tenThousandths;
            else if constexpr (std::is_same_v<Held, base::Date>)
                return left.days < right.days;
            else if constexpr (std::is_same_v<Held, base::Guid>)
                return *literalOf(left) < *literalOf(right);
            else if constexpr (std::is_same_v<Held, base::Decimal>) {
                const auto amount = [](const base::Decimal& each) {
                    return each.negative ? -std::int64_t{each.magnitude[0]} : std::int64_t{each.magnitude[0]};
                };
                return amount(left) < amount(right);
            } else
                return false;
        },
        a);
}

/// Random values of a column's type and length. There are few different ones, so that some are equal, and extreme ones.
class RandomValues {
public:
    explicit RandomValues(std::mt19937& random) : random_(random) {}

    std::uint32_t below(std::size_t limit) { return static_cast<std::uint32_t>(random_() % limit); }

    /// Sometimes null, but never an empty text.
    base::Value value(const jet::Column& column) {
        if (column.type == jet::ColumnType::Boolean) return below(2) == 0;
        if (below(6) == 0) return base::Null{};
        switch (column.type) {
            case jet::ColumnType::Byte:
                return static_cast<std::uint8_t>(below(2) == 0 ? below(20) : below(256));
            case jet::ColumnType::Integer:
                return whole<std::int16_t>();
            case jet::ColumnType::Long:
                return whole<std::int32_t>();
            case jet::ColumnType::Currency:
                return base::Currency{below(4) == 0 ? whole<std::int64_t>()
                                                    : std::int64_t{2500} * whole<std::int16_t>()};
            case jet::ColumnType::Single:
                return static_cast<float>(real(3e38));
            case jet::ColumnType::Double:
                return real(1e300);
            case jet::ColumnType::DateTime:
                return base::Date{real(38143.75)};
            case jet::ColumnType::Numeric:
                return base::Decimal{
                    below(2) == 0, column.scale, {1 + below(below(2) == 0 ? 99 : 0x7FFFFFFF), 0, 0, 0}};
            case jet::ColumnType::Guid:
                return guid();
            case jet::ColumnType::Binary:
                return bytes(column.lengthBytes);
            case jet::ColumnType::Ole:
                return bytes(below(4) == 0 ? 15'000 : 200);
            case jet::ColumnType::Text:
                return text(std::min<std::size_t>(column.lengthBytes / 2U, below(4) == 0 ? 250 : 10));
            case jet::ColumnType::Memo:
                return text(below(4) == 0 ? 9000 : 200);
            default:
                return base::Null{};
        }
    }

private:
    template <typename Whole>
    Whole whole() {
        using Limits = std::numeric_limits<Whole>;
        const std::uint32_t kind = below(20);
        if (kind < 2) return kind == 0 ? Limits::min() : Limits::max();
        return static_cast<Whole>(static_cast<std::int32_t>(below(kind < 10 ? 20 : 1000)) - 10);
    }

    /// In the range that all three types share.
    double real(double large) {
        const double few[] = {0.0, -0.0, 0.1, -1.25, 1e-30, large, -large};
        if (below(2) == 0) return few[below(std::size(few))];
        return (static_cast<double>(random_()) - 2e9) * 1.234567e-4;
    }

    base::Guid guid() {
        base::Guid guid;
        for (std::uint8_t& byte : guid.bytes)
            byte = static_cast<std::uint8_t>(below(2) == 0 ? 0xA5 : 0x1F);
        return guid;
    }

    base::Bytes bytes(std::size_t longest) {
        return base::Bytes(below(longest + 1), static_cast<std::uint8_t>(below(4)));
    }

    base::Text text(std::size_t longest) {
        static constexpr base::TextView kLetters = u"abcxyzÄöüßéABC 019-.Ω";
        base::Text text(1 + below(longest), u'x');
        for (char16_t& unit : text)
            unit = kLetters[below(kLetters.size())];
        return text;
    }

    std::mt19937& random_;
};

}  // namespace test
