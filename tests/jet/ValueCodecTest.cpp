#include <gtest/gtest.h>
#include <limits>

#include "base/RuntimeError.h"
#include "jet/value/ColumnConversion.h"
#include "jet/value/ValueCodec.h"
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
        // A sign, then four words, the highest first.
        {ColumnType::Numeric, "80 04 00 00 00 03 00 00 00 01 00 00 00 02 00 00 00",
         base::Decimal{true, 2, {2, 1, 3, 4}}},
    };
    for (const StoredValue& each : cases) {
        EXPECT_EQ(decodeValue(column(each.type), fromHex(each.stored), {}), each.value) << each.stored;
        EXPECT_EQ(toHex(encodeValue(column(each.type), each.value)), each.stored);
    }
}

TEST(ValueCodec, RefusesValuesWhoseLengthDoesNotFitTheirType) {
    for (const ColumnType type : {ColumnType::Byte, ColumnType::Integer, ColumnType::Long, ColumnType::Double,
                                  ColumnType::Guid, ColumnType::Numeric, ColumnType::Block}) {
        EXPECT_THROW(decodeValue(column(type), fromHex("01 02 03"), {7, 1}), base::RuntimeError);
        EXPECT_THROW(decodeValue(column(type), {}, {7, 1}), base::RuntimeError);
    }
    EXPECT_THROW(decodeValue(column(ColumnType::Text), fromHex("41 00 42"), {7, 1}), base::RuntimeError);
}

TEST(ValueCodec, PadsValuesOfFixedLengthAndNeverCompressesThem) {
    Column fixed = column(ColumnType::Text);
    fixed.flags = Column::kFixed | Column::kUpdatable;
    fixed.lengthBytes = 8;
    fixed.extendedFlags = Column::kCompressed;
    EXPECT_EQ(toHex(encodeValue(fixed, base::Text(u"abc"))), "61 00 62 00 63 00 20 00");
    EXPECT_THROW(encodeValue(fixed, base::Text(u"\xFEFF")), base::RuntimeError) << "it would be read as compressed";
    fixed.type = ColumnType::Binary;
    EXPECT_EQ(toHex(encodeValue(fixed, base::Bytes{1, 2, 3})), "01 02 03 00 00 00 00 00");
}

TEST(ColumnConversion, ConvertsWhatFitsAndRefusesTheRest) {
    const base::Decimal decimal{true, 1, {125, 0, 0, 0}};  // -12.5
    const base::Decimal long38{false, 0, {0xFFFFFFFF, 0xFFFFFFFF, 0, 0}};
    const base::Text written = u" {04030201-0605-0807-090a-0B0C0D0E0F10}";
    const base::Guid guid{{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}};
    const base::Value none = base::Null{};
    const struct {
        ColumnType type;
        base::Value value;
        base::Value converted;  ///< null: the value is refused
    } cases[] = {
        {ColumnType::Boolean, base::Currency{1}, true},
        {ColumnType::Boolean, -0.0, false},
        {ColumnType::Boolean, none, false},
        {ColumnType::Boolean, base::Text(u"ja"), none},
        {ColumnType::Byte, true, none},  // -1
        {ColumnType::Byte, 255.5, none},
        {ColumnType::Byte, 2.5F, std::uint8_t{2}},
        {ColumnType::Integer, true, std::int16_t{-1}},
        {ColumnType::Integer, base::Text(u"-3.5e1"), std::int16_t{-35}},
        {ColumnType::Long, base::Date{38143.5}, std::int32_t{38144}},
        {ColumnType::Long, base::Date{38144.5}, std::int32_t{38144}},
        {ColumnType::Long, base::Currency{99'999}, std::int32_t{10}},
        {ColumnType::Long, std::numeric_limits<double>::infinity(), none},
        {ColumnType::Currency, decimal, base::Currency{-125'000}},
        {ColumnType::Currency, 0.1F, base::Currency{1000}},
        {ColumnType::Currency, long38, none},
        {ColumnType::Single, decimal, -12.5F},
        {ColumnType::Single, 1e39, none},
        {ColumnType::Double, base::Currency{-1}, -0.0001},
        {ColumnType::Double, long38, 18446744073709551615.0},
        {ColumnType::Double, base::Text(u"1e400"), none},
        {ColumnType::Double, guid, none},
        {ColumnType::DateTime, base::Text(u"2.25"), base::Date{2.25}},
        {ColumnType::DateTime, 2958466.0, none},
        {ColumnType::Numeric, base::Text(u"-12.505"), base::Decimal{true, 2, {1250, 0, 0, 0}}},
        {ColumnType::Numeric, decimal, base::Decimal{true, 2, {1250, 0, 0, 0}}},
        {ColumnType::Numeric, 1e15, none},
        {ColumnType::Numeric, 12345678901.354998, base::Decimal{false, 2, {1912276183, 287, 0, 0}}},
        {ColumnType::Numeric, 0.0, base::Decimal{false, 2, {}}},
        {ColumnType::Text, true, base::Text(u"-1")},
        {ColumnType::Text, base::Decimal{true, 1, {1'000'000, 0, 0, 0}}, base::Text(u"-100000")},
        {ColumnType::Text, std::uint8_t{0}, base::Text(u"0")},
        {ColumnType::Text, decimal, none},
        {ColumnType::Text, 3.0, none},
        {ColumnType::Text, base::Text(11, u'x'), none},
        {ColumnType::Memo, base::Text(11, u'x'), base::Text(11, u'x')},
        {ColumnType::Binary, base::Bytes(20), base::Bytes(20)},
        {ColumnType::Binary, base::Bytes(21), none},
        {ColumnType::Ole, base::Text(u"a"), none},
        {ColumnType::Guid, guid, guid},
        {ColumnType::Guid, written, guid},
        {ColumnType::Guid, written.substr(0, 37), none},
        {ColumnType::Guid, base::Text(38, u'A'), none},
        {ColumnType::Guid, base::Text(u"{0403020G-0605-0807-090a-0B0C0D0E0F10}"), none},
        {ColumnType::Guid, std::int32_t{1}, none},
        {ColumnType::Block, base::Bytes(3), none},
    };
    int number = 0;
    for (const auto& c : cases) {
        SCOPED_TRACE(number++);
        Column target = column(c.type);
        target.lengthBytes = 20;
        target.precision = 16;
        if (base::isNull(c.converted))
            EXPECT_THROW(convertToColumn(target, c.value), base::RuntimeError);
        else
            EXPECT_EQ(convertToColumn(target, c.value), c.converted);
    }
}

}  // namespace
}  // namespace jet
