#include <gtest/gtest.h>

#include "jet/change/RowDraft.h"
#include "jet/change/RowStore.h"
#include "jet/page/UsageMap.h"
#include "jet/table/Catalog.h"
#include "jet/table/DefinitionCounters.h"
#include "jet/tree/IndexCursor.h"
#include "jet/tree/IndexNode.h"
#include "tests/jet/PagesInMemory.h"
#include "tests/jet/WrittenFile.h"
#include "tests/support/SoundFile.h"

namespace jet {
namespace {

using base::Null;
using base::Text;

constexpr base::TextView kTable = u"Bestand";
enum Place : std::uint16_t { kId, kName, kNote, kPicture, kFlag, kCount, kKey };

test::SampleTable stock(bool isRequired = false) {
    TableDesign design;
    design.name = Text(kTable);
    design.columns = {{u"Id", ColumnType::Long},         {u"Name", ColumnType::Text, 50}, {u"Notiz", ColumnType::Memo},
                      {u"Bild", ColumnType::Ole},        {u"Aktiv", ColumnType::Boolean}, {u"Anzahl", ColumnType::Long},
                      {u"Kennung", ColumnType::Text, 20}};
    design.columns[kId].isAutoNumber = true;
    design.columns[kName].isRequired = isRequired;
    design.columns[kName].allowsZeroLength = false;
    design.indexes = {{u"PrimaryKey", {{u"Id"}}, true},
                      {u"Name", {{u"Name"}, {u"Anzahl", false}}},
                      {u"Kennung", {{u"Kennung"}}, false, IndexDefinition::kUnique | IndexDefinition::kIgnoreNulls}};
    return {design, {}};
}

/// Puts properties into the catalog, as the designer of a database does.
void setProperty(WrittenFile& file, base::TextView column, base::TextView name, base::TextView value) {
    const Table table = *openTable(file.store, kTable);
    PropertyBlob properties = table.properties();
    Property property{Text(name), 1, 12, {}};
    for (const char16_t unit : value) {
        property.data.push_back(static_cast<std::uint8_t>(unit));
        property.data.push_back(static_cast<std::uint8_t>(unit >> 8U));
    }
    properties.owners.push_back({static_cast<std::uint16_t>(column.empty() ? 0 : 1), Text(column), {property}});
    const Table catalog(file.store, CatalogEntry::ofCatalog());
    PageAllocator allocator(file.store);
    LongValueStore longValues(file.store, allocator, catalog.definition());
    RowStore rows(file.store, allocator, catalog.definition());
    RowDraft draft(file.store, catalog.definition(), catalog.rowAt(table.entry().row).view);
    draft.put(*catalog.definition().column(u"LvProp"), properties.encode());
    rows.replace(table.entry().row, draft.finish(longValues));
}

TEST(TableWriter, AutoNumbersAreGivenOnce) {
    WrittenFile file({stock()});
    const auto number = [](const RowOfValues& row) { return std::get<std::int32_t>(row[kId]); };
    EXPECT_EQ(number(file.writer(kTable).startRow()), 1) << "dropped";
    const RowPointer second = file.writer(kTable).insert(std::span<const Assignment>());
    EXPECT_EQ(file.rows(kTable).begin()->first, 2);
    file.writer(kTable).remove(second);
    EXPECT_EQ(number(file.writer(kTable).startRow()), 3);
    file.writer(kTable).insert({{{kId, std::int32_t{100}}}});
    EXPECT_EQ(number(file.writer(kTable).startRow()), 101);
    DefinitionCounters(file.store, openTable(file.store, kTable)->definition()).setLastAutoNumber(5);
    EXPECT_EQ(number(file.writer(kTable).startRow()), 101) << "a counter that is out of date";
    file.writer(kTable).insert({{{kId, std::int32_t{2147483647}}}});
    EXPECT_THROW(file.writer(kTable).startRow(), base::RuntimeError);
}

TEST(TableWriter, RefusesBeforeAnythingIsChanged) {
    WrittenFile file({stock(true)});
    const RowPointer row = file.writer(kTable).insert({{{kName, Text(u"Erste")}, {kKey, Text(u"k1")}}});
    file.writer(kTable).insert({{{kName, Text(u"Zweite")}, {kKey, Text(u"k2")}}});
    setProperty(file, u"Anzahl", u"ValidationRule", u">0");
    setProperty(file, u"Bild", u"ValidationRule", u"Rnd()>0");
    file.store.settle();
    const struct {
        const char* what;
        Assignment assignment;
        std::int32_t number;
        const char* text;
    } cases[] = {
        {"null", {kName, Null{}}, -2147467259, "Das Feld 'Bestand.Name' kann keinen Nullwert"},
        {"no text", {kName, Text()}, -2147467259, "Feld 'Bestand.Name' kann keine leere"},
        {"too long", {kName, Text(51, u'x')}, -2147217833, ""},
        {"a key twice", {kKey, Text(u"K2 ")}, -2147467259, "mehrfach vorkommende Werte"},
        {"a key of unknown order", {kKey, Text(u"\xD83D\xDE00")}, -2147467259, "Index 'Kennung'"},
        {"out of range", {kCount, 3e9}, -2147217833, ""},
        {"no number", {kCount, Text(u"zwei")}, -2147217913, ""},
        {"against a rule", {kCount, std::int32_t{0}}, -2147467259, "Gültigkeitsregel '>0' für 'Bestand.Anzahl'"},
        {"a rule not understood", {kPicture, base::Bytes(3)}, -2147467259, "'Rnd()>0'"},
        {"a number of the engine's", {kId, std::int32_t{9}}, -2147467259, "nicht aktualisiert werden"},
    };
    for (const auto& c : cases) {
        TableWriter writer = file.writer(kTable);
        try {
            writer.update(row, {{{kNote, Text(5000, u'n')}, c.assignment}});
            ADD_FAILURE() << c.what;
        } catch (const base::RuntimeError& error) {
            EXPECT_EQ(error.number(), c.number) << c.what;
            EXPECT_NE(std::string(error.what()).find(c.text), std::string::npos) << error.what();
        }
        EXPECT_EQ(file.store.changedPages(), 0U) << c.what;
    }
    EXPECT_THROW(file.writer(kTable).insert({{{kKey, Text(u"k3")}}}), base::RuntimeError) << "no name";
    EXPECT_EQ(file.store.changedPages(), 0U);
    EXPECT_THROW(file.writer(u"MSysObjects"), base::RuntimeError);
}

TEST(TableWriter, TakesNoPageForEmptyThatHidesRows) {
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

TEST(TableWriter, TakesNoPartOfALongValueThatBelongsToAnother) {
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

TEST(TableWriter, NewRowsHaveTheirDefaults) {
    WrittenFile file({stock()});
    setProperty(file, u"Anzahl", u"DefaultValue", u"7");
    file.writer(kTable).insert({{{kName, Text(u"A")}}});
    file.writer(kTable).insert({{{kName, Text(u"B")}, {kCount, Text(u" -12.5 ")}}});
    EXPECT_EQ(file.rows(kTable)[1][kCount], base::Value(std::int32_t{7}));
    EXPECT_EQ(file.rows(kTable)[2][kCount], base::Value(std::int32_t{-12}));
    setProperty(file, u"Notiz", u"DefaultValue", u"GenGUID()");
    file.writer(kTable).insert({{{kNote, Text(u"C")}}});
}

TEST(TableWriter, NoNumberIsTakenIfEveryNewRowWouldBeRefused) {
    /// Gives the first or the last entry of the index of names another key.
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
        return [=](WrittenFile& file) { setProperty(file, column, name, value); };
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
        table.rows.push_back({i, Text(u"Konto ") + base::decimal(i * 7919 % 20'000), Null{}, Null{}, true, i, Null{}});
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
