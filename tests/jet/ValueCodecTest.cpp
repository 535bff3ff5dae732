#include <gtest/gtest.h>

#include "base/RuntimeError.h"
#include "jet/ValueCodec.h"
#include "tests/jet/Hex.h"

namespace jet {
namespace {

Column column(ColumnType type) {
    Column made;
    made.name = u"Spalte";
    made.type = type;
    made.scale = 2;
    if (storedBytes(type) == 0) made.flags = Column::kUpdatable;
    return made;
}

struct StoredValue {
    ColumnType type;
    std::string stored;
    base::Value value;
};

TEST(ValueCodec, ReadsAndWritesEveryTypeOfValue) {
    const StoredValue cases[] = {
        {ColumnType::Byte, "FF", std::uint8_t{255}},
        {ColumnType::Integer, "FE FF", std::int16_t{-2}},
        {ColumnType::Long, "00 00 00 80", std::int32_t{-2147483647 - 1}},
        {ColumnType::Currency, "F0 D8 FF FF FF FF FF FF", base::Currency{-10000}},
        {ColumnType::Single, "00 00 C0 3F", 1.5F},
        {ColumnType::Double, "00 00 00 00 00 00 F8 3F", 1.5},
        {ColumnType::DateTime, "00 00 00 00 00 00 F4 BF", base::Date{-1.25}},
        {ColumnType::Binary, "00 01 00", base::Bytes{0, 1, 0}},
        {ColumnType::Text, "41 00", base::Text(u"A")},
        {ColumnType::Memo, "FF FE 41 42 43", base::Text(u"ABC")},
        {ColumnType::Guid, "01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F 10",
         base::Guid{{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}}},
        // Sign, then four words with the highest first.
        {ColumnType::Numeric, "80 00 00 00 00 00 00 00 00 01 00 00 00 02 00 00 00",
         base::Decimal{true, 2, {2, 1, 0, 0}}},
    };
    for (const StoredValue& each : cases) {
        EXPECT_EQ(decodeValue(column(each.type), fromHex(each.stored), {}), each.value) << each.stored;
        EXPECT_EQ(toHex(encodeValue(column(each.type), each.value)), each.stored);
    }
}

TEST(ValueCodec, RefusesValuesOfAnotherLengthThanTheirType) {
    for (const ColumnType type : {ColumnType::Byte, ColumnType::Integer, ColumnType::Long, ColumnType::Double,
                                  ColumnType::Guid, ColumnType::Numeric, ColumnType::Block}) {
        EXPECT_THROW(decodeValue(column(type), fromHex("01 02 03"), {7, 1}), base::RuntimeError);
        EXPECT_THROW(decodeValue(column(type), {}, {7, 1}), base::RuntimeError);
    }
    EXPECT_THROW(decodeValue(column(ColumnType::Text), fromHex("41 00 42"), {7, 1}), base::RuntimeError);
}

TEST(ValueCodec, FillsValuesOfAFixedLengthAndNeverCompressesThem) {
    Column fixed = column(ColumnType::Text);
    fixed.flags = Column::kFixed | Column::kUpdatable;
    fixed.lengthBytes = 8;
    fixed.extendedFlags = Column::kCompressed;
    EXPECT_EQ(toHex(encodeValue(fixed, base::Text(u"abc"))), "61 00 62 00 63 00 20 00");
    EXPECT_THROW(encodeValue(fixed, base::Text(u"\xFEFF")), base::RuntimeError) << "it would be read as compressed";
    fixed.type = ColumnType::Binary;
    EXPECT_EQ(toHex(encodeValue(fixed, base::Bytes{1, 2, 3})), "01 02 03 00 00 00 00 00");
}

}  // namespace
}  // namespace jet
