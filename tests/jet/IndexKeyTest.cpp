#include <gtest/gtest.h>
#include <string>

#include "base/RuntimeError.h"
#include "jet/index/IndexKey.h"
#include "tests/jet/Hex.h"

namespace jet {
namespace {

using base::Value;

Column columnOf(ColumnType type) {
    Column column;
    column.type = type;
    return column;
}

std::string keyOf(ColumnType type, const Value& value, bool ascending) {
    base::Bytes key;
    appendKeyPart(key, columnOf(type), value, ascending);
    return toHex(key);
}

TEST(IndexKey, EachTypeIsEncodedInItsOwnWay) {
    const base::Guid guid{{0x78, 0x56, 0x34, 0x12, 0xBC, 0x9A, 0xF0, 0xDE, 1, 2, 3, 4, 5, 6, 7, 8}};
    const base::Decimal plus{false, 2, {0x04030201, 0, 0, 0}};
    const base::Decimal minus{true, 2, {0x04030201, 0, 0, 0}};
    const struct {
        ColumnType type;
        Value value;
        std::string ascending;
        std::string descending;
    } cases[] = {
        {ColumnType::Long, base::Null{}, "00", "FF"},
        {ColumnType::Boolean, true, "7F 00", "80 FF"},
        {ColumnType::Boolean, false, "7F FF", "80 00"},
        {ColumnType::Boolean, base::Null{}, "7F FF", "80 00"},  // a Boolean is never null
        {ColumnType::Byte, std::uint8_t{7}, "7F 07", "80 F8"},
        {ColumnType::Integer, std::int16_t{-2}, "7F 7F FE", "80 80 01"},
        {ColumnType::Long, std::int32_t{1}, "7F 80 00 00 01", "80 7F FF FF FE"},
        {ColumnType::Long, std::int32_t{-1}, "7F 7F FF FF FF", "80 80 00 00 00"},
        {ColumnType::Currency, base::Currency{-1}, "7F 7F FF FF FF FF FF FF FF", "80 80 00 00 00 00 00 00 00"},
        {ColumnType::Single, 1.0F, "7F BF 80 00 00", "80 40 7F FF FF"},
        {ColumnType::Single, -1.0F, "7F 40 7F FF FF", "80 BF 80 00 00"},
        {ColumnType::Double, 1.0, "7F BF F0 00 00 00 00 00 00", "80 40 0F FF FF FF FF FF FF"},
        {ColumnType::DateTime, base::Date{-1.0}, "7F 40 0F FF FF FF FF FF FF", "80 BF F0 00 00 00 00 00 00"},
        {ColumnType::Text, base::Text(u"ü"), "7F 6F 01 13 00", "80 90 FE EC FF 00"},
        {ColumnType::Text, base::Text(), "7F 01 00", "80 FE FF 00"},
        {ColumnType::Binary, base::Bytes{1, 2}, "7F 01 02 00 00 00 00 00 00 02", "80 FE FD FF FF FF FF FF FF FD"},
        // Eight bytes are one full group. With two groups, only the last count is inverted.
        {ColumnType::Binary, base::Bytes(8, 1), "7F 01 01 01 01 01 01 01 01 08", "80 FE FE FE FE FE FE FE FE F7"},
        {ColumnType::Guid, guid, "7F 12 34 56 78 9A BC DE F0 09 01 02 03 04 05 06 07 08 08",
         "80 ED CB A9 87 65 43 21 0F 09 FE FD FC FB FA F9 F8 F7 F7"},
        // The sign of a descending decimal is not inverted.
        {ColumnType::Numeric, plus, "7F FF 00 00 00 00 00 00 00 00 00 00 00 00 04 03 02 01",
         "80 FF FF FF FF FF FF FF FF FF FF FF FF FF FB FC FD FE"},
        {ColumnType::Numeric, minus, "7F 00 FF FF FF FF FF FF FF FF FF FF FF FF FB FC FD FE",
         "80 00 00 00 00 00 00 00 00 00 00 00 00 00 04 03 02 01"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(keyOf(c.type, c.value, true), c.ascending) << static_cast<int>(c.type);
        EXPECT_EQ(keyOf(c.type, c.value, false), c.descending) << static_cast<int>(c.type);
    }
    base::Bytes key;
    EXPECT_THROW(appendKeyPart(key, columnOf(ColumnType::Ole), base::Bytes{1}, true), base::RuntimeError);
}

TEST(IndexKey, ASearchUsesTheIndexOnlyIfTheKeyIsCertain) {
    const struct {
        Value value;
        ColumnType type;
        bool answered;
    } cases[] = {
        {std::int16_t{17}, ColumnType::Long, true},
        {std::int32_t{255}, ColumnType::Byte, true},
        {std::int32_t{256}, ColumnType::Byte, false},
        {std::int32_t{-32769}, ColumnType::Integer, false},
        {17.0, ColumnType::Long, false},
        {base::Decimal{false, 1, {170, 0, 0, 0}}, ColumnType::Long, true},
        {base::Decimal{false, 1, {175, 0, 0, 0}}, ColumnType::Long, false},
        {base::Decimal{true, 2, {1, 0, 0, 0}}, ColumnType::Currency, true},
        {base::Decimal{true, 5, {1, 0, 0, 0}}, ColumnType::Currency, false},
        {std::int32_t{-1}, ColumnType::Currency, true},
        {base::Currency{1}, ColumnType::Currency, true},
        {true, ColumnType::Boolean, true},
        {std::int32_t{-1}, ColumnType::Boolean, false},
        {base::Bytes{}, ColumnType::Binary, true},
        {base::Guid{}, ColumnType::Guid, true},
        {base::Date{1.5}, ColumnType::DateTime, true},
        {base::Date{0.0}, ColumnType::DateTime, false},  // like the double 0.0
        {base::Decimal{false, 0, {1, 0, 0, 0}}, ColumnType::Numeric, false},
        {base::Text(u"17"), ColumnType::Long, false},
        {base::Null{}, ColumnType::Long, true},
        {base::Text(u"Müller"), ColumnType::Text, true},
        {base::Text{u'a', 0xD83D}, ColumnType::Text, false},
        {std::int32_t{1}, ColumnType::Text, false},
        {0.0, ColumnType::Double, false},  // -0.0 is equal but has other bytes
        {base::Text(u"a"), ColumnType::Memo, false},
    };
    for (const auto& c : cases)
        EXPECT_EQ(searchKeyPart(columnOf(c.type), c.value, true).has_value(), c.answered) << static_cast<int>(c.type);
    EXPECT_EQ(searchKeyPart(columnOf(ColumnType::Long), std::uint8_t{1}, true), fromHex("7F 80 00 00 01"));
}

}  // namespace
}  // namespace jet
