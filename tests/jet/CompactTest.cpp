#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "base/RuntimeError.h"
#include "jet/compact/Compactor.h"
#include "jet/compact/Comparison.h"
#include "jet/table/Catalog.h"
#include "jet/tree/IndexCursor.h"
#include "tests/fuzz/Seeds.h"
#include "tests/jet/WrittenFile.h"
#include "tests/support/MemoryIo.h"
#include "tests/support/RelatedTables.h"
#include "tests/support/SoundFile.h"

namespace jet {
namespace {

using base::Bytes;
using base::Value;

Database opened(const Bytes& file, base::TextView password) {
    return Database::open(std::make_unique<test::MemoryIo>(file), u"Probe.mdb", password);
}

Bytes compacted(const Bytes& file, base::TextView password = {}) {
    auto database = opened(file, password);
    auto source = database.beginRead();
    test::MemoryIo io;
    Compactor(source, source.header()).writeTo(io);
    return io.bytes();
}

/// What the comparison finds; empty if nothing.
std::string difference(const Bytes& file, const Bytes& copy, base::TextView password = {},
                       base::TextView copyPassword = {}) {
    auto database = opened(file, password);
    auto original = database.beginRead();
    auto other = opened(copy, copyPassword);
    auto read = other.beginRead();
    try {
        requireSameContents(original, original.header(), read, read.header());
        return {};
    } catch (const base::RuntimeError& error) {
        return base::toUtf8(error.description());
    }
}

void change(PageStore& store, base::TextView table, const std::function<void(TableDefinition&)>& edit) {
    TableDefinition definition = openTable(store, table)->definition();
    edit(definition);
    const auto pages = definitionPages(definition.encode(), definition.chain);
    for (std::size_t i = 0; i < pages.size(); ++i)
        std::ranges::copy(pages[i], store.change(definition.chain[i]).begin());
}

/// What the original engine and Access put into a file beyond what the Creator makes.
Bytes fileOfAccess() {
    test::SampleTable groups{{u"MSysNavPaneGroups",
                              {{u"Id", ColumnType::Long}, {u"ObjectID", ColumnType::Long}},
                              {{u"ObjectID", {{u"ObjectID"}}, false, 0}}},
                             {{1, 27}, {2, 16}, {3, 2}}};
    test::MemoryPageStore store(test::sampleFile({test::kontoTable(), groups}));
    const PageNumber page = openTable(store, groups.design.name)->definition().page;
    EXPECT_EQ(openTable(store, u"Konto")->definition().page, 16U);
    const Table objects = *openTable(store, u"MSysObjects");
    for (RowCursor cursor(objects); cursor.next();) {
        const RowView& row = cursor.row().view;
        if (row.stored(*row.definition().column(u"Id"))[0] != page) continue;
        const auto flags = row.stored(*row.definition().column(u"Flags"));
        const auto offset = flags.data() - cursor.row().page.bytes.bytes().data();
        store.change(row.place().page)[static_cast<std::size_t>(offset)] = 0x0A;
    }
    test::addSystemRow(store, u"MSysObjects",
                       objectRow(0x80000001, CatalogEntry::kTablesContainer, u"Abfrage", 5, 0, BuiltInAccount::Admin,
                                 knownCreationStamp(), Bytes(9000, 7)));
    test::addSystemRow(store, u"MSysQueries",
                       {static_cast<std::int32_t>(0x80000001), std::uint8_t{5}, Bytes{0, 1}, base::Text(u"Konto"),
                        base::Null{}, base::Text(3000, u'q'), std::int16_t{1}, base::Null{}});
    change(store, u"Konto", [](TableDefinition& definition) {
        definition.lastAutoNumber = 77;
        definition.kept[3] = 9;
        definition.columns[1].textOrder.lcid = 0x041D;  // whose keys we cannot make
        definition.indexes[1].block[42] = 5;
    });
    return store.file();
}

/// Rows that were moved, shortened and deleted.
Bytes usedFile() {
    WrittenFile file({test::kontoTable()});
    const auto write = [&](std::int32_t number, const base::Text& name, std::size_t noteUnits) {
        const Assignment assignments[] = {{1, name}, {4, base::Text(noteUnits, u'ß')}};
        if (number == 0)
            file.writer(u"Konto").insert(assignments);
        else
            file.writer(u"Konto").update(file.find(u"Konto", number), assignments);
    };
    for (int i = 3; i < 400; ++i)
        write(0, u"Konto " + base::decimal(i), 3);
    for (int i = 3; i < 300; i += 7)
        write(i, u"Umbenannt " + base::decimal(i), 40 * static_cast<std::size_t>(i));
    for (int i = 10; i < 390; ++i)
        if (i % 49 != 3) file.writer(u"Konto").remove(file.find(u"Konto", i));
    return file.store.file();
}

struct Sample {
    std::string name;
    Bytes file;
    base::Text password;
};

std::vector<Sample> samples() {
    std::vector<Sample> all = {{"of Access", fileOfAccess(), {}}, {"used", usedFile(), {}}};
    for (const Seed& seed : seeds()) {
        const bool isJet4 = Header::isJet4(base::ByteView{seed.file});
        const bool isProtected = seed.name == "accounts" || seed.name.starts_with("BenKTO");
        if (isJet4) all.push_back({seed.name, seed.file, base::Text(isProtected ? kSeedPassword : u"")});
    }
    for (std::size_t i = 0; i < 2; ++i)
        all.push_back({all[i].name + ", encoded", test::encoded(all[i].file, 0x1A2B3C4D), all[i].password});
    return all;
}

TEST(Compact, MakesTheSameFileWithoutWaste) {
    for (const Sample& sample : samples()) {
        SCOPED_TRACE(sample.name);
        const Bytes copy = compacted(sample.file, sample.password);
        EXPECT_EQ(difference(sample.file, copy, sample.password, sample.password), "");
        EXPECT_LE(copy.size(), sample.file.size());
        EXPECT_TRUE(compacted(copy, sample.password) == copy);
        // Faults of the original come along, and are found.
        if (test::faultsIn(sample.file, sample.password, test::Writers::Others).empty()) {
            EXPECT_EQ(test::faultsIn(copy, sample.password), "");
        }
    }
}

TEST(Compact, LeavesNothingOfDeletedRows) {
    WrittenFile file(compacted(usedFile()));
    EXPECT_LT(compacted(usedFile()).size(), usedFile().size() / 2);
    const Table table = *openTable(file.store, u"Konto");
    for (auto page = table.ownedPages().next(0); page; page = table.ownedPages().next(*page + 1)) {
        const DataPage data = DataPage::read(file.store, *page, table.definition().page);
        for (std::size_t slot = 0; slot < data.slotCount(); ++slot)
            EXPECT_EQ(data.slot(slot).state, SlotState::Live);
    }
    // The last numbers were deleted; none of them is given again.
    file.writer(u"Konto").insert({});
    EXPECT_EQ(file.rows(u"Konto").rbegin()->first, 400);
}

TEST(Compact, CarriesWhatOnlyAccessUnderstands) {
    const Bytes copy = compacted(fileOfAccess());
    test::MemoryPageStore store(copy);
    const Table konto = *openTable(store, u"Konto");
    EXPECT_EQ(konto.definition().columns[1].textOrder.lcid, 0x041D);
    IndexCursor cursor(store, konto.definition().page, konto.definition().indexes[1].rootPage);
    EXPECT_TRUE(cursor.first() && cursor.next() && !cursor.next());
    std::vector<Value> objects;
    const Table groups = *openTable(store, u"MSysNavPaneGroups");
    for (RowCursor rows(groups); rows.next();)
        objects.push_back(groups.value(rows.row().view, groups.definition().columns[1]));
    const auto number = [](const Table& table) { return Value(static_cast<std::int32_t>(table.definition().page)); };
    EXPECT_EQ(objects, (std::vector<Value>{27, number(konto), 2}));
    EXPECT_NE(konto.definition().page, 16U);
}

/// A full row, and columns that were added later: with them it would be too long.
TEST(Compact, TakesFullRowsThatAreOlderThanTheLastColumns) {
    test::SampleTable table{{u"T", {}, {}}, {{}}};
    for (const char16_t* name : {u"A", u"B", u"C", u"D", u"E", u"F", u"G", u"H"}) {
        table.design.columns.push_back({name, ColumnType::Binary, 510});
        table.rows[0].emplace_back(Bytes(name[0] == u'H' ? 480 : 510, 1));
    }
    test::MemoryPageStore store(test::sampleFile({table}));
    for (const char16_t* name : {u"I", u"J", u"K"}) {
        table.design.columns.push_back({name, ColumnType::Double});
        table.design.columns.push_back({name + base::Text(u"2"), ColumnType::Text, 20});
    }
    change(store, u"T", [&](TableDefinition& definition) {
        const TableDefinition later = makeDefinition(table.design);
        definition.columns = later.columns;
        definition.columnsEver = later.columnsEver;
        definition.variableColumnsEver = later.variableColumnsEver;
    });
    const Bytes copy = compacted(store.file());
    EXPECT_EQ(difference(store.file(), copy), "");
    EXPECT_TRUE(compacted(copy) == copy);
}

TEST(Compact, RelationshipsHoldInTheCopy) {
    for (const Seed& seed : seeds()) {
        if (seed.name != "related") continue;
        WrittenFile file(compacted(seed.file));
        const Assignment toNobody{0, 999};
        EXPECT_THROW(file.writer(u"Zweite").insert(std::span(&toNobody, 1)), base::RuntimeError);
        const std::size_t before = file.rows(u"Zweite").size();
        file.writer(u"Konten").remove(file.find(u"Konten", 2));
        EXPECT_LT(file.rows(u"Zweite").size(), before);  // deletions cascade
        EXPECT_EQ(test::faultsIn(file.store), "");
    }
}

TEST(Compact, RefusesWhatItCannotRead) {
    const auto refused = [](const std::function<void(PageStore&)>& damage) -> std::string {
        test::MemoryPageStore store(test::sampleFile({test::kontoTable()}));
        damage(store);
        try {
            compacted(store.file());
            return "made";
        } catch (const base::RuntimeError& error) {
            return base::toUtf8(error.description());
        }
    };
    const auto has = [](const std::string& text, std::string_view words) {
        EXPECT_NE(text.find(words), std::string::npos) << text;
    };
    has(refused([](PageStore& store) {
            change(store, u"Konto", [](TableDefinition& table) { table.columns[2].type = ColumnType{0x12}; });
        }),
        "Die Tabelle 'Konto' ist nicht lesbar");
    // An index that has an entry too much, and one that has none.
    has(refused([](PageStore& store) {
            const PageNumber page = *openTable(store, u"Konto")->ownedPages().next(0);
            store.change(page)[kDataPageHeaderBytes + 1] |= 0xC0;
            change(store, u"Konto", [](TableDefinition& table) { table.rowCount = 1; });
        }),
        "Ein Index der Tabelle 'Konto'");
    has(refused([](PageStore& store) {
            base::putU16(store.change(openTable(store, u"Konto")->definition().indexes[1].rootPage), 2, 3616);
            auto page = store.change(openTable(store, u"Konto")->definition().indexes[1].rootPage);
            std::fill(page.begin() + kIndexMaskOffset, page.end(), std::uint8_t{0});
        }),
        "Der Index 'Name' der Tabelle 'Konto' hat 0 Einträge für 2 Datensätze");
}

TEST(Comparison, NoticesEveryPlantedFault) {
    const Bytes sound = compacted(seeds()[3].file);
    ASSERT_EQ(seeds()[3].name, "related");
    ASSERT_EQ(difference(seeds()[3].file, sound), "");
    const auto edit = [](const std::function<void(TableDefinition&)>& how) {
        return [how](WrittenFile& file) { change(file.store, u"Konten", how); };
    };
    const auto put = [](std::uint16_t column, const Value& value) {
        return [column, value](WrittenFile& file) {
            const Assignment assignment{column, value};
            file.writer(u"Konten").update(file.find(u"Konten", 4), std::span(&assignment, 1));
        };
    };
    const std::vector<std::pair<const char*, std::function<void(WrittenFile&)>>> faults = {
        {"ist das Feld 'Merkmal' ein anderes", put(2, base::Text(u"anders"))},
        {"Datensatz 4, ist das Feld 'Notiz' ein anderes", put(3, base::Text(9999, u'm') + u"n")},
        {"ist das Feld 'Aktiv' ein anderes", put(4, false)},
        {"Zahl von Datensätzen", [](WrittenFile& file) { file.writer(u"Zweite").remove(file.find(u"Zweite", 10)); }},
        {"letzten Autowert", edit([](TableDefinition& table) { ++table.lastAutoNumber; })},
        {"Definition", edit([](TableDefinition& table) { table.kept[5] ^= 1; })},
        {"Definition", edit([](TableDefinition& table) { table.columns[2].extendedFlags ^= 1; })},
        {"Definition", edit([](TableDefinition& table) { table.columns[2].name = u"Notizen"; })},
        {"Definition", edit([](TableDefinition& table) { table.columns[3].textOrder.lcid = 7; })},
        {"Definition", edit([](TableDefinition& table) { table.indexes[1].flags ^= IndexDefinition::kIgnoreNulls; })},
        {"Definition", edit([](TableDefinition& table) { table.indexes[1].columns[0].ascending = false; })},
        {"Definition", edit([](TableDefinition& table) { table.logicalIndexes.pop_back(); })},
        {"Definition", edit([](TableDefinition& table) {
             for (LogicalIndex& index : table.logicalIndexes)
                 if (index.kind == LogicalIndex::Kind::ForeignKey) index.updateRule = 1;
         })},
        {"'MSysRelationships' hat eine andere Zahl",
         [](WrittenFile& file) { test::addSystemRow(file.store, u"MSysRelationships", std::vector<Value>(8)); }},
        {"der Kopf", [](WrittenFile& file) {
             Header header = Header::read(file.store.page(0).bytes);
             header.codePage = 1250;
             header.write(file.store.change(0));
         }}};
    for (const auto& [found, plant] : faults) {
        WrittenFile file(sound);
        plant(file);
        const std::string text = difference(seeds()[3].file, file.store.file());
        EXPECT_NE(text.find(found), std::string::npos) << "wanted " << found << ", found " << text;
    }
}

}  // namespace
}  // namespace jet
