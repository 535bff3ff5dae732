#include <gtest/gtest.h>

#include "jet/table/RowCodec.h"
#include "tests/jet/Hex.h"
#include "tests/jet/PagesInMemory.h"

namespace jet {
namespace {

Column fixedColumn(std::uint16_t number, ColumnType type, std::uint16_t offset) {
    Column column;
    column.name = u"F" + base::decimal(number);
    column.type = type;
    column.number = number;
    column.fixedOffset = offset;
    column.lengthBytes = static_cast<std::uint16_t>(storedBytes(type));
    return column;
}

Column variableColumn(std::uint16_t number, std::uint16_t index) {
    Column column;
    column.name = u"V" + base::decimal(number);
    column.type = ColumnType::Binary;
    column.number = number;
    column.variableIndex = index;
    column.flags = Column::kUpdatable;
    return column;
}

/// Columns: Long 0, Boolean 1, variable 2, variable 3 (deleted), variable 4, Integer 5.
TableDefinition sampleDefinition() {
    TableDefinition definition;
    definition.columns = {fixedColumn(0, ColumnType::Long, 0), fixedColumn(1, ColumnType::Boolean, 0),
                          variableColumn(2, 0), variableColumn(4, 2), fixedColumn(5, ColumnType::Integer, 4)};
    definition.columnsEver = 6;
    definition.variableColumnsEver = 3;
    return definition;
}

constexpr const char* kSampleRow = "06 00  04 03 02 01  FF 7F  AA BB  CC  0B 00  0A 00 0A 00 08 00  03 00  37";

TEST(RowCodec, EncodesRowsWithAPlaceForDeletedColumns) {
    const TableDefinition definition = sampleDefinition();
    const std::vector<Cell> cells = {base::Bytes{4, 3, 2, 1}, base::Bytes{1},
                                     base::Bytes{0xAA, 0xBB}, std::nullopt,
                                     base::Bytes{0xCC},       base::Bytes{0xFF, 0x7F}};
    EXPECT_EQ(encodeRow(definition, cells), fromHex(kSampleRow));
    EXPECT_EQ(toHex(encodeRow(definition, std::vector<Cell>(6))),
              "06 00 00 00 00 00 00 00 08 00 08 00 08 00 08 00 03 00 00");

    TableDefinition onlyFixed;
    onlyFixed.columns = {fixedColumn(0, ColumnType::Boolean, 0)};
    onlyFixed.columnsEver = 1;
    EXPECT_EQ(toHex(encodeRow(onlyFixed, std::vector<Cell>{base::Bytes{1}})), "01 00 00 01");
}

/// The columns of a row as text: "-" for null, otherwise the bytes.
std::string show(const RowView& row) {
    std::string shown;
    for (const Column& column : row.definition().columns) {
        shown += shown.empty() ? "" : " | ";
        if (column.type == ColumnType::Boolean) {
            shown += row.flag(column) ? "yes" : "no";
        } else {
            shown += row.isNull(column) ? "-" : toHex(row.stored(column));
        }
    }
    return shown;
}

TEST(RowCodec, ReadsRowsOfAnyAgeAndReportsImpossibleOnes) {
    const struct {
        const char* what;
        const char* bytes;
        std::string shown;  ///< or a part of the error
        bool isDamaged = false;
    } cases[] = {
        {"with all columns", kSampleRow, "04 03 02 01 | yes | AA BB | CC | FF 7F"},
        {"all null", "06 00  00 00 00 00  00 00  08 00  08 00 08 00 08 00  03 00  00", "- | no | - | - | -"},
        {"with padding before the offsets",
         "06 00  04 03 02 01  FF 7F  AA BB  EE EE EE  0A 00  0A 00 0A 00 08 00  03 00  25",
         "04 03 02 01 | no | AA BB | - | FF 7F"},
        {"with data of a deleted column", "06 00  04 03 02 01  FF 7F  AA  DD  CC  0B 00  0A 00 09 00 08 00  03 00  3F",
         "04 03 02 01 | yes | AA | CC | FF 7F"},
        {"older than the last columns", "03 00  04 03 02 01  AA  07 00  06 00  01 00  05",
         "04 03 02 01 | no | AA | - | -"},
        {"not null and empty", "06 00  00 00 00 00  00 00  08 00  08 00 08 00 08 00  03 00  14", "- | no |  |  | -"},
        {"marked not null but without an offset", "06 00  04 03 02 01  FF 7F  AA  09 00  08 00  01 00  15",
         "04 03 02 01 | no | AA | - | -"},
        {"empty", "", "0 Bytes", true},
        {"no columns", "00 00 00 00 00 00 00 00", "hat 0 Spalten", true},
        {"more columns than the table", "07 00  00 00 00 00  00 00  08 00  08 00 08 00 08 00  03 00  00",
         "hat 7 Spalten", true},
        {"too short", "06 00 00 00 00", "zu kurz", true},
        {"more variable columns than the table", "06 00  00 00 00 00  00 00  08 00  08 00 08 00 08 00  04 00  00",
         "4 Spalten", true},
        {"offsets beyond its beginning", "06 00  08 00  03 00  00", "3 Spalten", true},
        {"data after the offsets", "06 00  04 03 02 01  FF 7F  AA BB  CC  0D 00  0A 00 0A 00 08 00  03 00  37",
         "enden bei Byte 13", true},
        {"data before the row", "06 00  04 03 02 01  FF 7F  AA BB  CC  0B 00  0A 00 0A 00 01 00  03 00  37",
         "enden bei Byte 11", true},
        {"offsets that descend", "06 00  04 03 02 01  FF 7F  AA BB  CC  0B 00  09 00 0C 00 0A 00  03 00  37",
         "außerhalb der Zeile", true},
        {"a fixed column in the variable data",
         "06 00  04 03 02 01  FF 7F  AA BB  CC  0B 00  0A 00 0A 00 06 00  03 00  37", "'F5'", true},
    };
    const TableDefinition definition = sampleDefinition();
    for (const auto& each : cases) {
        const base::Bytes bytes = fromHex(each.bytes);
        std::string shown;
        const std::string error = errorOf([&] { shown = show(RowView(bytes, definition, {9, 1})); });
        if (each.isDamaged) {
            EXPECT_NE(error.find("Seite 9, Zeile 1"), std::string::npos) << each.what << ": " << error;
            EXPECT_NE(error.find(each.shown), std::string::npos) << each.what << ": " << error;
        } else {
            EXPECT_EQ(shown, each.shown) << each.what << ": " << error;
        }
    }
}

TEST(RowCodec, ReadsRowsOfTablesWithoutVariableColumns) {
    TableDefinition definition;
    definition.columns = {fixedColumn(0, ColumnType::Integer, 0), fixedColumn(1, ColumnType::Byte, 2)};
    definition.columnsEver = 2;
    EXPECT_EQ(show(RowView(fromHex("02 00  34 12  07  03"), definition, {})), "34 12 | 07");
    EXPECT_EQ(show(RowView(fromHex("01 00  34 12  01"), definition, {})), "34 12 | -");
}

}  // namespace
}  // namespace jet
