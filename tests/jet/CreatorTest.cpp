#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "base/RuntimeError.h"
#include "jet/index/IndexedRow.h"
#include "jet/page/UsageMap.h"
#include "jet/table/Catalog.h"
#include "jet/tree/IndexCursor.h"
#include "tests/fuzz/Seeds.h"
#include "tests/support/RandomValues.h"
#include "tests/support/SampleFile.h"
#include "tests/support/SoundFile.h"
#include "tests/support/TempFolder.h"

namespace jet {
namespace {

using base::Value;
using test::Rows;

base::Bytes fileWith(const TableDesign& design, const Rows& rows, const base::Text& password = {}) {
    return test::sampleFile({{design, rows}}, password);
}

Rows readAll(ReadOperation& operation, const Table& table) {
    Rows rows;
    for (RowCursor cursor(table); cursor.next();) {
        std::vector<Value>& row = rows.emplace_back();
        for (const Column* column : table.definition().columnsForDisplay())
            row.push_back(valueOf(operation, cursor.row().view, *column));
    }
    return rows;
}

TEST(Creator, WrittenRowsAreReadBackAndTheFileIsSound) {
    test::SampleTable table = everyType();
    for (IndexDesign& index : table.design.indexes)
        index.flags = 0;
    std::mt19937 random(std::random_device{}());
    test::RandomValues values(random);
    table.rows.assign(120, {});
    for (std::size_t i = 0; i < table.rows.size(); ++i) {
        for (const Column& column : makeDefinition(table.design).columns)
            table.rows[i].push_back(values.value(column));
        table.rows[i][0] = static_cast<std::int32_t>(i + 1);
    }
    const base::Bytes file = test::sampleFile({table}, u"geheim");
    EXPECT_EQ(test::faultsIn(file, u"geheim"), "");
    auto database = Database::open(test::Machine(file).storage(), u"geheim");
    auto operation = database.beginRead();
    const Table read = *openTable(operation, u"ALLES");
    EXPECT_EQ(readAll(operation, read), table.rows);
    EXPECT_EQ(read.definition().lastAutoNumber, 120U);
    const PropertyBlob properties = read.properties();
    EXPECT_FALSE(properties.isRequired(table.design.columns[9].name));
    EXPECT_TRUE(properties.allowsZeroLength(table.design.columns[9].name));
}

TEST(Creator, RefusesRowsAndPasswordsThatWouldMakeAnUnsoundFile) {
    TableDesign design;
    design.name = u"T";
    design.columns = {{u"Name", ColumnType::Text, 255}};
    design.indexes = {{u"Name", {{u"Name"}}, false, IndexDefinition::kUnique}};
    EXPECT_THROW(fileWith(design, {{base::Text(u"Straße")}, {base::Text(u"STRASSE ")}}), base::RuntimeError);
    EXPECT_NO_THROW(fileWith(design, {{base::Null{}}, {base::Null{}}}));  // nulls are not equal
    design.indexes[0].flags |= IndexDefinition::kRequired;
    EXPECT_THROW(fileWith(design, {{base::Null{}}}), base::RuntimeError);
    EXPECT_THROW(fileWith(design, {{base::Text{0xD83D, 0xDE00}}}), base::RuntimeError);
    EXPECT_THROW(fileWith(design, {}, u"einundzwanzig Zeichen"), base::RuntimeError);
    EXPECT_NO_THROW(fileWith(design, {{base::Text(u"Strasse")}, {base::Text(u"Straße 2")}}, u"zwanzig Zeichen lang"));
}

TEST(Creator, UsageMapsOfEverySizeHoldTheirPages) {
    // The global map: usual row, longest row, one and two bitmap pages.
    for (const PageNumber count : {20U, 512U, 513U, 32032U, 32033U, 40000U}) {
        const test::TempFolder folder;
        const auto io = openFile((folder / "a.mdb").u16string(), OpenMode::CreateNew);
        FreshPages pages(*io);
        while (pages.count() < count)
            pages.allocate();
        FreshMaps maps(pages);
        const std::vector<std::vector<PageNumber>> sets = {
            {}, {3, 511}, {500, 1000}, {8, 520}, {count - 5, count - 1}, {1, 32735, 32736, 70000}};
        std::vector<RowPointer> rows;
        for (const auto& set : sets) {
            rows.push_back(maps.reserve());
            maps.set(rows.back(), set);
        }
        maps.finish();
        writeGlobalMap(pages);
        io->resize(std::uint64_t{pages.count()} * kPageSize);

        PageFile file(*io, 0);
        EXPECT_EQ(DataPage(file.page(1)).slot(0).bytes[0], count > 1000 ? 1 : 0) << "the kind of map for " << count;
        const UsageMap global = UsageMap::read(file, {1, 0});
        for (PageNumber page = 0; page < pages.count(); ++page)
            ASSERT_FALSE(global.contains(page)) << count << ", page " << page;
        if (count != 512 && count != 32032) {
            EXPECT_TRUE(global.contains(pages.count()));
        }
        for (std::size_t i = 0; i < sets.size(); ++i) {
            const UsageMap map = UsageMap::read(file, rows[i]);
            std::vector<PageNumber> read;
            for (auto page = map.next(0); page; page = map.next(*page + 1))
                read.push_back(*page);
            EXPECT_EQ(read, sets[i]) << count;
        }
    }
}

}  // namespace
}  // namespace jet
