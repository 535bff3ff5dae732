#include "jet/index/IndexKey.h"

#include <algorithm>
#include <bit>
#include <limits>
#include <variant>

#include "base/ByteView.h"
#include "jet/Errors.h"
#include "jet/table/Table.h"
#include "jet/value/ExactNumber.h"
#include "jet/value/GuidText.h"
#include "jet/value/TextCodec.h"

namespace jet {
namespace {

using base::appendBigEndian;
using base::Bytes;
using base::Value;

constexpr std::uint8_t kNullAscending = 0x00;
constexpr std::uint8_t kNullDescending = 0xFF;
constexpr std::uint8_t kValueAscending = 0x7F;
constexpr std::uint8_t kValueDescending = 0x80;
constexpr std::size_t kGroupBytes = 8;
constexpr std::uint8_t kGroupGoesOn = 9;

void invertFrom(Bytes& key, std::size_t start) {
    for (std::size_t i = start; i < key.size(); ++i)
        key[i] = static_cast<std::uint8_t>(~key[i]);
}

/// @param bits  two's complement; the sign bit is inverted, so that negative numbers come first
void appendWhole(Bytes& key, std::uint64_t bits, unsigned bytes) {
    appendBigEndian(key, bits ^ (std::uint64_t{1} << (8 * bytes - 1)), bytes);
}

void appendReal(Bytes& key, std::uint64_t bits, unsigned bytes) {
    const std::uint64_t sign = std::uint64_t{1} << (8 * bytes - 1);
    appendBigEndian(key, (bits & sign) != 0 ? ~bits : bits ^ sign, bytes);
}

/// In a descending key the data of the groups and the last count are inverted. The counts in between are not.
void appendGroups(Bytes& key, std::span<const std::uint8_t> bytes, bool ascending) {
    for (std::size_t at = 0; at < bytes.size(); at += kGroupBytes) {
        const std::size_t start = key.size();
        const std::size_t count = std::min(kGroupBytes, bytes.size() - at);
        const bool isLast = at + count == bytes.size();
        key.insert(key.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at),
                   bytes.begin() + static_cast<std::ptrdiff_t>(at + count));
        key.resize(start + kGroupBytes, 0);
        if (isLast) key.push_back(static_cast<std::uint8_t>(count));
        if (!ascending) invertFrom(key, start);
        if (!isLast) key.push_back(kGroupGoesOn);
    }
}

void appendDecimal(Bytes& key, const base::Decimal& value, bool ascending) {
    key.push_back(value.negative ? 0x00 : 0xFF);
    const std::size_t start = key.size();
    for (std::size_t word = value.magnitude.size(); word > 0; --word)
        appendBigEndian(key, value.magnitude[word - 1], 4);
    if (value.negative == ascending) invertFrom(key, start);
}

/// Appends the bytes of one value to a key.
class ValueAppender {
public:
    ValueAppender(Bytes& key, const Column& column, bool ascending)
        : key_(key), column_(column), ascending_(ascending) {}

    void operator()(base::Null) const {}
    void operator()(bool value) const {
        simple([&] { key_.push_back(value ? 0x00 : 0xFF); });
    }
    void operator()(std::uint8_t value) const {
        simple([&] { key_.push_back(value); });
    }
    void operator()(std::int16_t value) const {
        simple([&] { appendWhole(key_, static_cast<std::uint16_t>(value), 2); });
    }
    void operator()(std::int32_t value) const {
        simple([&] { appendWhole(key_, static_cast<std::uint32_t>(value), 4); });
    }
    void operator()(base::Currency value) const {
        simple([&] { appendWhole(key_, static_cast<std::uint64_t>(value.tenThousandths), 8); });
    }
    void operator()(float value) const {
        simple([&] { appendReal(key_, std::bit_cast<std::uint32_t>(value), 4); });
    }
    void operator()(double value) const {
        simple([&] { appendReal(key_, std::bit_cast<std::uint64_t>(value), 8); });
    }
    void operator()(base::Date value) const { (*this)(value.days); }
    void operator()(const base::Text& value) const {
        simple([&] { appendSortKey(key_, value, column_.textOrder); });
        if (!ascending_) key_.push_back(0x00);
    }
    void operator()(const Bytes& value) const { appendGroups(key_, value, ascending_); }
    void operator()(const base::Guid& value) const { appendGroups(key_, asWritten(value), ascending_); }
    void operator()(const base::Decimal& value) const { appendDecimal(key_, value, ascending_); }

private:
    /// In a descending key most values are completely inverted.
    template <typename Append>
    void simple(Append append) const {
        const std::size_t start = key_.size();
        append();
        if (!ascending_) invertFrom(key_, start);
    }

    Bytes& key_;
    const Column& column_;
    bool ascending_;
};

/// The number times 10^scale, for any exact number; nothing if the result is not a whole number.
std::optional<std::int64_t> scaledFrom(const Value& value, int scale) {
    if (const auto* byte = std::get_if<std::uint8_t>(&value)) return ExactNumber(*byte).scaledTo(scale);
    if (const auto* integer = std::get_if<std::int16_t>(&value)) return ExactNumber(*integer).scaledTo(scale);
    if (const auto* number = std::get_if<std::int32_t>(&value)) return ExactNumber(*number).scaledTo(scale);
    if (const auto* decimal = std::get_if<base::Decimal>(&value)) return ExactNumber(*decimal).exactlyScaledTo(scale);
    return std::nullopt;
}

template <typename Whole>
std::optional<Value> narrowed(const Value& value) {
    const auto number = scaledFrom(value, 0);
    if (!number || *number < std::numeric_limits<Whole>::min() || *number > std::numeric_limits<Whole>::max()) {
        return std::nullopt;
    }
    return static_cast<Whole>(*number);
}

template <typename Alternative>
std::optional<Value> same(const Value& value) {
    if (!std::holds_alternative<Alternative>(value)) return std::nullopt;
    return value;
}

std::optional<Value> asCurrency(const Value& value) {
    constexpr int kScale = 4;
    if (std::holds_alternative<base::Currency>(value)) return value;
    const auto amount = scaledFrom(value, kScale);
    return amount ? std::optional<Value>(base::Currency{*amount}) : std::nullopt;
}

std::optional<Value> asDecimal(const Column& column, const Value& value) {
    const auto* given = std::get_if<base::Decimal>(&value);
    if (given == nullptr) return std::nullopt;
    const ExactNumber number(*given);
    const auto held = number.decimal(column.precision, column.scale);
    if (!held || !number.hasScale(column.scale)) return std::nullopt;
    return *held;
}

/// The value in the form that the column would hold.
std::optional<Value> asHeldBy(const Column& column, const Value& value) {
    if (base::isNull(value)) return value;
    switch (column.type) {
        case ColumnType::Boolean:
            return same<bool>(value);
        case ColumnType::Byte:
            return narrowed<std::uint8_t>(value);
        case ColumnType::Integer:
            return narrowed<std::int16_t>(value);
        case ColumnType::Long:
            return narrowed<std::int32_t>(value);
        case ColumnType::Currency:
            return asCurrency(value);
        case ColumnType::Single:
            return same<float>(value);
        case ColumnType::Double:
            return same<double>(value);
        case ColumnType::DateTime:
            return same<base::Date>(value);
        case ColumnType::Guid:
            return same<base::Guid>(value);
        case ColumnType::Numeric:
            return asDecimal(column, value);
        case ColumnType::Binary:
            return same<Bytes>(value);
        case ColumnType::Text:
        case ColumnType::Memo:
            return same<base::Text>(value);
        default:
            return std::nullopt;
    }
}

/// Whether all equal values have the same key.
bool hasOneKey(const Column& column, const Value& held) {
    switch (column.type) {
        // Zero may have a sign, and a key contains only the beginning of a memo.
        case ColumnType::Single:
        case ColumnType::Double:
        case ColumnType::Numeric:
        case ColumnType::Memo:
            return base::isNull(held);
        case ColumnType::DateTime: {
            const auto* date = std::get_if<base::Date>(&held);
            return date == nullptr || date->days != 0;
        }
        case ColumnType::Text: {
            const auto* text = std::get_if<base::Text>(&held);
            return text == nullptr || sortKeyIsCertain(*text, column.textOrder);
        }
        default:
            return true;
    }
}

}  // namespace

void appendKeyPart(Bytes& key, const Column& column, const Value& value, bool ascending) {
    if (column.type == ColumnType::Ole || column.type == ColumnType::Block) {
        throw failure(u"Das Feld '" + column.name + u"' kann nicht Teil eines Indexes sein.");
    }
    if (base::isNull(value)) {
        if (column.type == ColumnType::Boolean)
            appendKeyPart(key, column, false, ascending);
        else
            key.push_back(ascending ? kNullAscending : kNullDescending);
        return;
    }
    key.push_back(ascending ? kValueAscending : kValueDescending);
    std::visit(ValueAppender(key, column, ascending), value);
}

bool keyOfRow(PageSource& source, const IndexDefinition& index, const RowView& row, Bytes& key) {
    key.clear();
    bool allNull = true;
    for (const IndexColumn& part : index.columns) {
        const Column& column = row.definition().columnOf(part);
        const Value value = valueOf(source, row, column);
        allNull = allNull && base::isNull(value);
        appendKeyPart(key, column, value, part.ascending);
    }
    return !(allNull && index.ignoresNulls());
}

bool keyOfRowIsCertain(PageSource& source, const IndexDefinition& index, const RowView& row) {
    return std::all_of(index.columns.begin(), index.columns.end(), [&](const IndexColumn& part) {
        const Column& column = row.definition().columnOf(part);
        if (!column.isText() || row.isNull(column)) return true;
        if (column.type == ColumnType::Text) {
            const auto units = oneByteUnits(row.stored(column));
            if (units && latinSortKeyIsCertain(units->size(), column.textOrder)) return true;
        }
        const Value value = valueOf(source, row, column);
        const auto* text = std::get_if<base::Text>(&value);
        return text == nullptr || sortKeyIsCertain(*text, column.textOrder);
    });
}

std::optional<Bytes> keyPartFor(const Column& column, const Value& value, bool ascending) {
    const std::optional<Value> held = asHeldBy(column, value);
    if (!held) return std::nullopt;
    Bytes key;
    appendKeyPart(key, column, *held, ascending);
    return key;
}

std::optional<Bytes> searchKeyPart(const Column& column, const Value& value, bool ascending) {
    const std::optional<Value> held = asHeldBy(column, value);
    return held && hasOneKey(column, *held) ? keyPartFor(column, *held, ascending) : std::nullopt;
}

}  // namespace jet
