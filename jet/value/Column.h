#pragma once

#include <array>
#include <cstdint>

#include "base/Text.h"
#include "jet/value/SortKey.h"

namespace jet {

enum class ColumnType : std::uint8_t {
    Boolean = 0x01,  ///< stored only in the null mask
    Byte = 0x02,
    Integer = 0x03,
    Long = 0x04,
    Currency = 0x05,
    Single = 0x06,
    Double = 0x07,
    DateTime = 0x08,
    Binary = 0x09,
    Text = 0x0A,
    Ole = 0x0B,   ///< long value of bytes
    Memo = 0x0C,  ///< long value of text
    Guid = 0x0F,
    Numeric = 0x10,
    Block = 0x11,  ///< 3992 bytes without further structure, in one of Access's own tables
};

/// A column of a table, and the fields of its descriptor of 25 bytes:
///
///     offset size
///     0      1    type
///     1      4    1625
///     5      2    number: bit of the null mask, never given twice
///     7      2    variable columns: index in the row's offset table
///     9      2    display position
///     11     4    Text, Memo: LCID, 0, version; Numeric: precision, scale, 0, 0
///     15     1    flags
///     16     1    extended flags
///     17     4    0
///     21     2    fixed columns: offset in the fixed area
///     23     2    length in bytes
///
/// See docs/file-format.md, "Table definitions".
struct Column {
    static constexpr std::size_t kDescriptorBytes = 25;
    static constexpr std::uint8_t kFixed = 0x01;
    static constexpr std::uint8_t kUpdatable = 0x02;
    static constexpr std::uint8_t kAutoNumber = 0x04;
    static constexpr std::uint8_t kSystem = 0x10;
    static constexpr std::uint8_t kAutoGuid = 0x40;
    static constexpr std::uint8_t kCompressed = 0x01;  ///< extended flag

    base::Text name;
    ColumnType type = ColumnType::Long;
    std::uint16_t number = 0;
    std::uint16_t variableIndex = 0;
    std::uint16_t displayPosition = 0;
    TextOrder textOrder;         ///< of all types except Numeric; matters only for Text and Memo
    std::uint8_t precision = 0;  ///< Numeric
    std::uint8_t scale = 0;      ///< Numeric
    std::uint8_t flags = kFixed | kUpdatable;
    std::uint8_t extendedFlags = 0;
    std::uint16_t fixedOffset = 0;
    std::uint16_t lengthBytes = 0;
    std::array<std::uint8_t, kDescriptorBytes> descriptor{};  ///< as read; keeps the bytes that have no field above

    bool isFixed() const { return (flags & kFixed) != 0; }
    bool isAutoNumber() const { return (flags & kAutoNumber) != 0; }
    bool isLongValue() const { return type == ColumnType::Ole || type == ColumnType::Memo; }
    bool isText() const { return type == ColumnType::Text || type == ColumnType::Memo; }
    bool compresses() const { return (extendedFlags & kCompressed) != 0; }
};

/// Bytes of a value of this type. 0 for types of varying length, and for Boolean, whose value is only in the null mask.
std::size_t storedBytes(ColumnType type);

}  // namespace jet
