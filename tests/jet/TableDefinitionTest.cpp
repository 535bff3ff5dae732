#include <algorithm>
#include <functional>
#include <gtest/gtest.h>

#include "jet/table/TableDefinition.h"
#include "tests/jet/PagesInMemory.h"

namespace jet {
namespace {

/// A definition with enough columns for several pages.
TableDefinition bigDefinition() {
    TableDefinition definition;
    definition.rowCount = 7;
    definition.lastAutoNumber = 12;
    definition.kept[5] = 0xEE;
    for (std::uint16_t number = 0; number < 120; ++number) {
        Column column;
        column.name = base::Text(60, u'x') + base::decimal(number);
        column.type = number % 2 == 0 ? ColumnType::Long : ColumnType::Text;
        column.number = number;
        column.displayPosition = static_cast<std::uint16_t>(200 - number);
        column.flags = number % 2 == 0 ? 0x03 : 0x02;
        column.variableIndex = number / 2;
        column.fixedOffset = static_cast<std::uint16_t>(number * 2);
        column.lengthBytes = number % 2 == 0 ? 4 : 100;
        column.descriptor[18] = 0xEE;
        definition.columns.push_back(column);
    }
    definition.columnsEver = 121;
    definition.variableColumnsEver = 60;
    IndexDefinition index;
    index.columns = {{1, true}, {0, false}};
    index.flags = 0x89;
    index.rootPage = 99;
    index.block[50] = 0xEE;
    definition.indexes = {index};
    LogicalIndex foreign;
    foreign.name = u".rB";
    foreign.number = 3;
    foreign.kind = LogicalIndex::Kind::ForeignKey;
    LogicalIndex primary;
    primary.name = u"PrimaryKey";
    primary.kind = LogicalIndex::Kind::PrimaryKey;
    definition.logicalIndexes = {foreign, primary};
    definition.longValueMaps = {{7, {6, 1}, {}}};
    return definition;
}

std::vector<PageNumber> store(PagesInMemory& source, const base::Bytes& joined) {
    std::vector<PageNumber> chain;
    for (std::size_t i = 0; i < definitionPageCount(joined.size()); ++i)
        chain.push_back(source.add());
    const auto pages = definitionPages(joined, chain);
    for (std::size_t i = 0; i < pages.size(); ++i)
        std::copy(pages[i].begin(), pages[i].end(), source.change(chain[i]).begin());
    return chain;
}

TEST(TableDefinition, KeepsItsUnknownBytesAndMaySpanSeveralPages) {
    PagesInMemory source;
    const base::Bytes joined = bigDefinition().encode();
    const auto chain = store(source, joined);
    ASSERT_EQ(chain.size(), 5U);
    const TableDefinition read = TableDefinition::read(source, chain[0]);
    EXPECT_EQ(read.chain, chain);
    EXPECT_EQ(read.encode(), joined);
    EXPECT_EQ(read.indexes[0].name, u"PrimaryKey");
    EXPECT_TRUE(read.indexes[0].isPrimary && read.indexes[0].isUnique() && read.indexes[0].isRequired());
    EXPECT_EQ(read.columnsForDisplay().front()->number, 119);
    EXPECT_EQ(read.column(base::Text(60, u'X') + u"17"), &read.columns[17]);
    EXPECT_EQ(read.column(u"17"), nullptr);
    EXPECT_EQ(read.fixedAreaBytes(), 118U * 2 + 4);
}

TEST(TableDefinition, ReportsImpossibleDefinitions) {
    constexpr std::size_t kColumnsStart = 63 + 12;
    struct Case {
        const char* what;
        std::function<void(PagesInMemory&, const std::vector<PageNumber>&)> harm;
    };
    const auto put = [](std::size_t offset, std::uint32_t value, std::size_t count) {
        return [=](PagesInMemory& source, const std::vector<PageNumber>& chain) {
            base::putLittleEndian(source.change(chain[0]), offset, value, count);
        };
    };
    const Case cases[] = {
        {"a loop in the chain",
         [](PagesInMemory& source, const auto& chain) { base::putU32(source.change(chain[3]), 4, chain[1]); }},
        {"a page of another kind", [](PagesInMemory& source, const auto& chain) { source.change(chain[2])[0] = 1; }},
        {"a chain cut short",
         [](PagesInMemory& source, const auto& chain) { base::putU32(source.change(chain[3]), 4, 0); }},
        {"a next page behind the end",
         [](PagesInMemory& source, const auto& chain) { base::putU32(source.change(chain[3]), 4, 0x00FFFFFF); }},
        {"a length beyond the pages", put(8, 0x00FFFFFF, 4)},
        {"a length of nothing", put(8, 0, 4)},
        {"no columns", put(45, 0, 2)},
        {"more columns than ever", put(45, 122, 2)},
        {"too many columns ever", put(41, 256, 2)},
        {"indexes without end", put(51, 0xFFFFFFFF, 4)},
        {"logical indexes without end", put(47, 0x7FFFFFFF, 4)},
        {"a column of an unknown type", put(kColumnsStart, 0x0D, 1)},
        {"a column number too large", put(kColumnsStart + 5, 121, 2)},
        {"a column number twice", put(kColumnsStart + 5, 1, 2)},
        {"a place twice", put(kColumnsStart + 25 + 7, 1, 2)},
        {"a place too large", put(kColumnsStart + 25 + 7, 60, 2)},
        {"a length that is not the type's", put(kColumnsStart + 23, 3, 2)},
        {"a fixed column behind any row", put(kColumnsStart + 21, 4093, 2)},
    };
    for (const Case& each : cases) {
        PagesInMemory source;
        const auto chain = store(source, bigDefinition().encode());
        each.harm(source, chain);
        EXPECT_THROW(TableDefinition::read(source, chain[0]), base::RuntimeError) << each.what;
    }
    TableDefinition twice = bigDefinition();
    twice.columns[1].name = base::Text(60, u'X') + u"0";
    PagesInMemory source;
    EXPECT_THROW(TableDefinition::read(source, store(source, twice.encode())[0]), base::RuntimeError) << "a name twice";
    TableDefinition lost = bigDefinition();
    lost.indexes[0].columns[0].columnNumber = 120;
    EXPECT_THROW(TableDefinition::read(source, store(source, lost.encode())[0]), base::RuntimeError)
        << "a deleted column";
}

}  // namespace
}  // namespace jet
