#include "jet/value/ValueCodec.h"

#include <algorithm>
#include <bit>
#include <cassert>

#include "base/ByteView.h"
#include "jet/Errors.h"
#include "jet/value/TextCodec.h"

namespace jet {
namespace {

using base::Bytes;
using base::ByteView;
using base::Value;

constexpr std::uint8_t kNegative = 0x80;

base::Guid decodeGuid(ByteView bytes) {
    base::Guid guid;
    std::copy(bytes.bytes().begin(), bytes.bytes().end(), guid.bytes.begin());
    return guid;
}

base::Decimal decodeDecimal(ByteView bytes, std::uint8_t scale) {
    base::Decimal decimal;
    decimal.negative = (bytes.u8(0) & kNegative) != 0;
    decimal.scale = scale;
    for (std::size_t i = 0; i < 4; ++i)
        decimal.magnitude[3 - i] = bytes.u32(1 + 4 * i);
    return decimal;
}

Bytes encodeDecimal(const base::Decimal& decimal) {
    Bytes bytes(17);
    bytes[0] = decimal.negative ? kNegative : std::uint8_t{0};
    for (std::size_t i = 0; i < 4; ++i)
        base::putU32(bytes, 1 + 4 * i, decimal.magnitude[3 - i]);
    return bytes;
}

Bytes littleEndian(std::uint64_t value, std::size_t count) {
    Bytes bytes(count);
    base::putLittleEndian(bytes, 0, value, count);
    return bytes;
}

Bytes encodeColumnText(const Column& column, base::Text text) {
    // Memos are always compressed, whatever the column says.
    if (!column.isFixed()) return encodeText(text, column.type == ColumnType::Memo || column.compresses());
    text.resize(column.lengthBytes / 2U, u' ');
    return encodePlainText(text);
}

Bytes encodeBinary(const Column& column, Bytes bytes) {
    if (column.isFixed()) bytes.resize(column.lengthBytes);
    return bytes;
}

}  // namespace

Value decodeValue(const Column& column, std::span<const std::uint8_t> stored, RowPointer place) {
    const std::size_t needed = storedBytes(column.type);
    if (needed != 0 && stored.size() != needed) {
        throw damagedRow(place, u"Spalte '" + column.name + u"' hat " + base::decimal(stored.size()) + u" statt " +
                                    base::decimal(needed) + u" Bytes");
    }
    const ByteView bytes{stored};
    switch (column.type) {
        case ColumnType::Byte:
            return bytes.u8(0);
        case ColumnType::Integer:
            return bytes.i16(0);
        case ColumnType::Long:
            return bytes.i32(0);
        case ColumnType::Currency:
            return base::Currency{bytes.i64(0)};
        case ColumnType::Single:
            return bytes.f32(0);
        case ColumnType::Double:
            return bytes.f64(0);
        case ColumnType::DateTime:
            return base::Date{bytes.f64(0)};
        case ColumnType::Guid:
            return decodeGuid(bytes);
        case ColumnType::Numeric:
            return decodeDecimal(bytes, column.scale);
        case ColumnType::Text:
        case ColumnType::Memo: {
            base::Text text;
            if (!decodeText(stored, text)) {
                throw damagedRow(place, u"Der Text der Spalte '" + column.name + u"' endet mit einem halben Zeichen");
            }
            return text;
        }
        case ColumnType::Binary:
        case ColumnType::Ole:
        case ColumnType::Block:
            return Bytes(stored.begin(), stored.end());
        case ColumnType::Boolean:
            break;
    }
    assert(false);
    return base::Null{};
}

Bytes encodeValue(const Column& column, const Value& value) {
    switch (column.type) {
        case ColumnType::Boolean:
            return littleEndian(std::get<bool>(value) ? 1 : 0, 1);
        case ColumnType::Byte:
            return littleEndian(std::get<std::uint8_t>(value), 1);
        case ColumnType::Integer:
            return littleEndian(static_cast<std::uint16_t>(std::get<std::int16_t>(value)), 2);
        case ColumnType::Long:
            return littleEndian(static_cast<std::uint32_t>(std::get<std::int32_t>(value)), 4);
        case ColumnType::Currency:
            return littleEndian(static_cast<std::uint64_t>(std::get<base::Currency>(value).tenThousandths), 8);
        case ColumnType::Single:
            return littleEndian(std::bit_cast<std::uint32_t>(std::get<float>(value)), 4);
        case ColumnType::Double:
            return littleEndian(std::bit_cast<std::uint64_t>(std::get<double>(value)), 8);
        case ColumnType::DateTime:
            return littleEndian(std::bit_cast<std::uint64_t>(std::get<base::Date>(value).days), 8);
        case ColumnType::Guid: {
            const auto& bytes = std::get<base::Guid>(value).bytes;
            return {bytes.begin(), bytes.end()};
        }
        case ColumnType::Numeric:
            return encodeDecimal(std::get<base::Decimal>(value));
        case ColumnType::Text:
        case ColumnType::Memo:
            return encodeColumnText(column, std::get<base::Text>(value));
        case ColumnType::Binary:
        case ColumnType::Ole:
        case ColumnType::Block:
            return encodeBinary(column, std::get<Bytes>(value));
    }
    assert(false);
    return {};
}

}  // namespace jet
