#include "jet/value/ColumnConversion.h"

#include <cmath>
#include <limits>
#include <optional>
#include <type_traits>

#include "jet/WriteErrors.h"
#include "jet/value/ExactNumber.h"
#include "jet/value/GuidText.h"

namespace jet {
namespace {

using base::Value;

constexpr double kFirstDate = -657434;  // the year 100
constexpr double kDateLimit = 2958466;  // the year 10000
constexpr std::uint8_t kCurrencyScale = 4;

/// A number to be converted. It is exact if possible.
using Source = std::variant<ExactNumber, double>;

std::optional<Source> sourceOf(const Value& value) {
    return std::visit(
        [](const auto& held) -> std::optional<Source> {
            using Held = std::decay_t<decltype(held)>;
            if constexpr (std::is_same_v<Held, bool>) return ExactNumber{held ? -1 : 0};
            if constexpr (std::is_integral_v<Held>) return ExactNumber{held};
            if constexpr (std::is_same_v<Held, base::Currency>) return ExactNumber{held.tenThousandths, kCurrencyScale};
            if constexpr (std::is_same_v<Held, base::Decimal>) return ExactNumber{held};
            if constexpr (std::is_floating_point_v<Held>) return static_cast<double>(held);
            if constexpr (std::is_same_v<Held, base::Date>) return held.days;
            if constexpr (std::is_same_v<Held, base::Text>) {
                if (const auto number = ExactNumber::fromText(base::toUtf8(base::trimBlanks(held)))) return *number;
            }
            return std::nullopt;
        },
        value);
}

class Converter {
public:
    explicit Converter(const Column& column) : column_(column) {}

    Value convert(const Value& value) const {
        switch (column_.type) {
            case ColumnType::Boolean:
                return asBoolean(value);
            case ColumnType::Text:
            case ColumnType::Memo:
                return asText(value);
            case ColumnType::Binary:
            case ColumnType::Ole:
                return asBytes(value);
            case ColumnType::Guid:
                return asGuid(value);
            case ColumnType::Block:
                throw valueOfOtherType();
            default:
                return asNumber(source(value));
        }
    }

private:
    Source source(const Value& value) const {
        const auto number = sourceOf(value);
        if (!number) throw valueOfOtherType();
        return *number;
    }

    Value asBoolean(const Value& value) const {
        if (const auto* flag = std::get_if<bool>(&value)) return *flag;
        const Source number = source(value);
        if (const auto* floating = std::get_if<double>(&number)) return *floating != 0;
        return !std::get<ExactNumber>(number).isZero();
    }

    Value asText(const Value& value) const {
        base::Text text;
        if (const auto* given = std::get_if<base::Text>(&value)) {
            text = *given;
        } else {
            // How numbers with a fraction and dates are written depends on the user's settings.
            const auto number = sourceOf(value);
            const auto* exact = number ? std::get_if<ExactNumber>(&*number) : nullptr;
            const auto whole = exact != nullptr ? exact->wholeText() : std::nullopt;
            if (!whole) throw valueOfOtherType();
            text = base::fromUtf8(*whole);
        }
        if (column_.type == ColumnType::Text && text.size() > column_.lengthBytes / 2U) throw valueTooLong();
        return text;
    }

    Value asGuid(const Value& value) const {
        if (std::holds_alternative<base::Guid>(value)) return value;
        const auto* text = std::get_if<base::Text>(&value);
        const auto guid = text != nullptr ? guidFromText(*text) : std::nullopt;
        if (!guid) throw valueOfOtherType();
        return *guid;
    }

    Value asBytes(const Value& value) const {
        const auto* bytes = std::get_if<base::Bytes>(&value);
        if (bytes == nullptr) throw valueOfOtherType();
        if (column_.type == ColumnType::Binary && bytes->size() > column_.lengthBytes) throw valueTooLong();
        return *bytes;
    }

    Value asNumber(const Source& number) const {
        switch (column_.type) {
            case ColumnType::Byte:
                return whole<std::uint8_t>(number);
            case ColumnType::Integer:
                return whole<std::int16_t>(number);
            case ColumnType::Long:
                return whole<std::int32_t>(number);
            case ColumnType::Currency:
                return base::Currency{scaled(number, kCurrencyScale)};
            case ColumnType::Single: {
                const double wide = asDouble(number);
                if (!(std::abs(wide) <= std::numeric_limits<float>::max())) throw valueTooLong();
                return static_cast<float>(wide);
            }
            case ColumnType::Double:
                return asDouble(number);
            case ColumnType::DateTime: {
                const double days = asDouble(number);
                if (!(days >= kFirstDate && days < kDateLimit)) throw valueTooLong();
                return base::Date{days};
            }
            default:
                return asDecimal(number);
        }
    }

    template <typename Whole>
    Value whole(const Source& number) const {
        const std::int64_t value = scaled(number, 0);
        if (value < std::numeric_limits<Whole>::min() || value > std::numeric_limits<Whole>::max())
            throw valueTooLong();
        return static_cast<Whole>(value);
    }

    std::int64_t scaled(const Source& number, std::uint8_t scale) const {
        const auto value = exact(number).scaledTo(scale);
        if (!value) throw valueTooLong();
        return *value;
    }

    Value asDecimal(const Source& number) const {
        const auto decimal = exact(number).decimal(column_.precision, column_.scale);
        if (!decimal) throw valueTooLong();
        return *decimal;
    }

    double asDouble(const Source& number) const {
        const auto* floating = std::get_if<double>(&number);
        const double value = floating != nullptr ? *floating : std::get<ExactNumber>(number).toDouble();
        if (!std::isfinite(value)) throw valueTooLong();
        return value;
    }

    ExactNumber exact(const Source& number) const {
        const auto* floating = std::get_if<double>(&number);
        if (floating == nullptr) return std::get<ExactNumber>(number);
        const auto exact = ExactNumber::fromDouble(*floating);
        if (!exact) throw valueTooLong();
        return *exact;
    }

    const Column& column_;
};

}  // namespace

Value convertToColumn(const Column& column, const Value& value) {
    if (!base::isNull(value)) return Converter(column).convert(value);
    return column.type == ColumnType::Boolean ? Value(false) : value;
}

}  // namespace jet
