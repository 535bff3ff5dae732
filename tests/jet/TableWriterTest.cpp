#include <gtest/gtest.h>

#include "jet/page/UsageMap.h"
#include "jet/table/Catalog.h"
#include "jet/table/DefinitionCounters.h"
#include "jet/tree/IndexCursor.h"
#include "jet/tree/IndexNode.h"
#include "tests/jet/PagesInMemory.h"
#include "tests/jet/WrittenFile.h"
#include "tests/support/RelatedTables.h"
#include "tests/support/SoundFile.h"

namespace jet {
namespace {

using base::Null;
using base::Text;

constexpr base::TextView kTable = u"Bestand";
enum Place : std::uint16_t { kId, kName, kNote, kPicture, kFlag, kCount };

test::SampleTable stock() {
    TableDesign design;
    design.name = Text(kTable);
    design.columns = {{u"Id", ColumnType::Long},  {u"Name", ColumnType::Text, 50}, {u"Notiz", ColumnType::Memo},
                      {u"Bild", ColumnType::Ole}, {u"Aktiv", ColumnType::Boolean}, {u"Anzahl", ColumnType::Long}};
    design.columns[kId].isAutoNumber = true;
    design.indexes = {{u"PrimaryKey", {{u"Id"}}, true}, {u"Name", {{u"Name"}, {u"Anzahl", false}}}};
    return {design, {}};
}

/// Random work on whole tables (tests/embedded) tests the usual numbers.
TEST(TableWriter, GivesNoNumberThatIsUsedOrTooLarge) {
    WrittenFile file({stock()});
    const auto number = [&] { return std::get<std::int32_t>(file.writer(kTable).startRow()[kId]); };
    file.writer(kTable).insert({{{kId, std::int32_t{100}}}});
    EXPECT_EQ(number(), 101);
    DefinitionCounters(file.store, openTable(file.store, kTable)->definition()).setLastAutoNumber(5);
    EXPECT_EQ(number(), 101) << "the counter is out of date";
    file.writer(kTable).insert({{{kId, std::int32_t{2147483647}}}});
    EXPECT_THROW(number(), base::RuntimeError);
}

TEST(TableWriter, DoesNotFreeADamagedPageThatStillHoldsRows) {
    constexpr std::size_t kSlotCountPlace = 12;
    WrittenFile file({stock()});
    const RowPointer row = file.writer(kTable).insert({{{kName, Text(u"Erste")}, {kNote, Text(300, u'n')}}});
    file.writer(kTable).insert({{{kName, Text(u"Zweite")}, {kNote, Text(300, u'n')}}});
    const Table table = *openTable(file.store, kTable);
    const PageNumber notes = *UsageMap::read(file.store, table.definition().longValueMaps[0].owned).next(0);
    base::putU16(file.store.change(notes), kSlotCountPlace, 1);
    EXPECT_NE(errorOf([&] { file.writer(kTable).remove(row); }).find("Der freie Platz der Datenseite"),
              std::string::npos);
}

TEST(TableWriter, DoesNotFreePartsOfAnotherLongValue) {
    WrittenFile file({stock()});
    const RowPointer row = file.writer(kTable).insert({{{kName, Text(u"Erste")}, {kNote, Text(9000, u'n')}}});
    const RowPointer other = file.writer(kTable).insert({{{kName, Text(u"Zweite")}, {kNote, Text(9000, u'n')}}});
    const Table table = *openTable(file.store, kTable);
    const auto firstPart = [&](RowPointer each) {
        const Row found = table.rowAt(each);
        return LongValueReference::read(found.view.stored(table.definition().columns[kNote]), each).first;
    };
    const RowPointer part = firstPart(row);
    const auto bytes = DataPage(file.store.page(part.page)).slot(part.slot).bytes;
    const auto place = static_cast<std::size_t>(bytes.data() - file.store.page(part.page).bytes.bytes().data());
    base::putU32(file.store.change(part.page), place, firstPart(other).packed());
    EXPECT_THROW(file.writer(kTable).remove(row), base::RuntimeError);
}

TEST(TableWriter, UsesUpNoNumberIfEveryNewRowWouldBeRefused) {
    /// Gives the first or last entry of the index of names a key that we would not write.
    const auto foreignKey = [](bool first) {
        return [=](WrittenFile& file) {
            const TableDefinition table = openTable(file.store, kTable)->definition();
            const auto byName = std::ranges::find(table.indexes, u"Name", &IndexDefinition::name);
            IndexCursor cursor(file.store, table.page, byName->rootPage);
            ASSERT_TRUE(first ? cursor.first() : cursor.last());
            IndexNode leaf(IndexPage(file.store.page(cursor.leafPage()), table.page));
            const std::size_t at = first ? 0 : leaf.size() - 1;
            base::Bytes forged(leaf.entry(at).begin(), leaf.entry(at).end());
            forged[1] = static_cast<std::uint8_t>(first ? forged[1] - 1 : forged[1] + 1);
            leaf.replaceEntry(at, forged);
            leaf.write(file.store.change(cursor.leafPage()), table.page, 0);
        };
    };
    const auto setting = [](base::TextView column, base::TextView name, base::TextView value) {
        return [=](WrittenFile& file) { test::setProperty(file.store, kTable, column, name, value); };
    };
    const struct {
        const char* text;
        std::function<void(WrittenFile&)> prepare;
    } cases[] = {
        {"'GenGUID()' der Spalte 'Notiz'", setting(u"Notiz", u"DefaultValue", u"GenGUID()")},
        {"'Rnd()>0' für 'Bestand.Bild'", setting(u"Bild", u"ValidationRule", u"Rnd()>0")},
        {"'Rnd()>0' für 'Bestand'", setting(u"", u"ValidationRule", u"Rnd()>0")},
        {"Index 'Name' ist nach einer anderen Sortierfolge aufgebaut", foreignKey(true)},
        {"Index 'Name' ist nach einer anderen Sortierfolge aufgebaut", foreignKey(false)},
    };
    for (const auto& [text, prepare] : cases) {
        WrittenFile file({stock()});
        for (std::int32_t i = 0; i < 150; ++i)  // so that the index has several leaves
            file.writer(kTable).insert({{{kName, Text(40, static_cast<char16_t>(u'a' + i % 26)) + base::decimal(i)}}});
        prepare(file);
        file.store.settle();
        try {
            file.writer(kTable).startRow();
            ADD_FAILURE() << text;
        } catch (const base::RuntimeError& error) {
            EXPECT_NE(std::string(error.what()).find(text), std::string::npos) << error.what();
        }
        EXPECT_EQ(file.store.changedPages(), 0U) << text;
    }
}

TEST(TableWriter, AShortUpdateChangesFewPages) {
    test::SampleTable table = stock();
    for (std::int32_t i = 1; i <= 20'000; ++i)
        table.rows.push_back({i, Text(u"Konto ") + base::decimal(i * 7919 % 20'000), Null{}, Null{}, true, i});
    WrittenFile file({table});
    const RowPointer row = file.find(kTable, 12'345);
    const auto changed = [&](auto&& step) {
        file.store.settle();
        step(file.writer(kTable));
        return file.store.changedPages();
    };
    EXPECT_EQ(changed([&](TableWriter writer) { writer.update(row, {{{kFlag, false}}}); }), 1U);
    EXPECT_EQ(changed([&](TableWriter writer) { writer.update(row, {{{kFlag, false}}}); }), 0U);
    EXPECT_LE(changed([&](TableWriter writer) { writer.update(row, {{{kName, Text(u"Anders")}}}); }), 8U);
    EXPECT_LE(changed([&](TableWriter writer) { writer.insert({{{kName, Text(u"Neu")}}}); }), 6U);
    EXPECT_LE(changed([&](TableWriter writer) { writer.remove(row); }), 8U);
    EXPECT_EQ(test::faultsIn(file.store), "");
}

}  // namespace
}  // namespace jet
