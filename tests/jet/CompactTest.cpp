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

base::Text passwordOf(const Bytes& file) {
    return Header::read(base::ByteView{std::span(file).first(kPageSize)}).password;
}

Database opened(const Bytes& file) {
    return Database::open(std::make_unique<test::MemoryIo>(file), u"Probe.mdb", passwordOf(file));
}

Bytes compacted(const Bytes& file) {
    auto database = opened(file);
    auto source = database.beginRead();
    test::MemoryIo io;
    Compactor(source, source.header()).writeTo(io);
    return io.bytes();
}

/// The first difference that the comparison finds; empty if there is none.
std::string difference(const Bytes& file, const Bytes& copy) {
    auto database = opened(file), other = opened(copy);
    auto original = database.beginRead(), read = other.beginRead();
    try {
        requireSameContents(original, original.header(), read, read.header());
        return {};
    } catch (const base::RuntimeError& error) {
        return base::toUtf8(error.description());
    }
}

/// Has texts in a sort order that we do not know, and bytes of unknown meaning.
Bytes fileOfAccess() {
    test::MemoryPageStore store(relatedTables());
    test::editDefinition(store, u"Konten", [](TableDefinition& definition) {
        definition.lastAutoNumber = 777;
        definition.kept[3] = 9;
        definition.columns[1].textOrder.lcid = 0x041D;
        definition.indexes[1].block[42] = 5;
    });
    return store.file();
}

/// Has rows that were moved, shortened and deleted.
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

std::vector<Seed> samples() {
    std::vector<Seed> all = seeds();
    std::erase_if(all, [](const Seed& seed) { return !Header::isJet4(base::ByteView{seed.file}); });
    for (const auto& [name, file] : {std::pair("of Access", fileOfAccess()), {"used", usedFile()}}) {
        all.push_back({name, file});
        all.push_back({name + std::string(", encoded"), test::encoded(file, 0x1A2B3C4D)});
    }
    return all;
}

TEST(Compact, KeepsTheContentsAndDropsUnusedSpace) {
    for (const Seed& sample : samples()) {
        SCOPED_TRACE(sample.name);
        const Bytes copy = compacted(sample.file);
        EXPECT_EQ(difference(sample.file, copy), "");
        EXPECT_LE(copy.size(), sample.file.size());
        EXPECT_TRUE(compacted(copy) == copy);
        // Faults of the original are copied, too.
        if (test::faultsIn(sample.file, passwordOf(sample.file), test::Writers::Others).empty()) {
            EXPECT_EQ(test::faultsIn(copy, passwordOf(copy)), "");
        }
    }
}

/// Checks what the comparison does not: index entries, unused space, and the new numbers of objects.
TEST(Compact, CopiesIndexEntriesAndObjectNumbersButNothingDeleted) {
    EXPECT_LT(compacted(usedFile()).size(), usedFile().size() / 2);
    test::MemoryPageStore store(compacted(fileOfAccess()));
    const Table konten = *openTable(store, u"Konten");
    std::size_t entries = 0;
    IndexCursor cursor(store, konten.definition().page, konten.definition().indexes[1].rootPage);
    for (bool there = cursor.first(); there; there = cursor.next())
        ++entries;
    EXPECT_EQ(entries, 150U);
    const Table groups = *openTable(store, u"MSysNavPaneGroups");
    std::vector<Value> objects;
    for (RowCursor rows(groups); rows.next();)
        objects.push_back(groups.value(rows.row().view, groups.definition().columns[1]));
    const PageNumber page = konten.definition().page;
    EXPECT_EQ(objects, (std::vector<Value>{27, static_cast<std::int32_t>(page), 2}));
    EXPECT_NE(page, 16U) << "its number in the original";
}

/// A row of the greatest length, older than some columns: written with them it would be too long.
TEST(Compact, CopiesFullRowsThatAreOlderThanTheLastColumns) {
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
    test::editDefinition(store, u"T", [&](TableDefinition& definition) {
        const TableDefinition later = makeDefinition(table.design);
        definition.columns = later.columns;
        definition.columnsEver = later.columnsEver;
        definition.variableColumnsEver = later.variableColumnsEver;
    });
    const Bytes copy = compacted(store.file());
    EXPECT_EQ(difference(store.file(), copy), "");
    EXPECT_TRUE(compacted(copy) == copy);
}

TEST(Compact, RefusesWhatItCannotRead) {
    const auto root = [](PageStore& store) { return openTable(store, u"Konto")->definition().indexes[1].rootPage; };
    const std::pair<std::function<void(PageStore&)>, std::string> damages[] = {
        {[](PageStore& store) {
             test::editDefinition(store, u"Konto",
                                  [](TableDefinition& table) { table.columns[2].type = ColumnType{0x12}; });
         },
         "Die Tabelle 'Konto' ist nicht lesbar"},
        {[](PageStore& store) {
             const PageNumber page = *openTable(store, u"Konto")->ownedPages().next(0);
             store.change(page)[kDataPageHeaderBytes + 1] |= 0xC0;
             test::editDefinition(store, u"Konto", [](TableDefinition& table) { table.rowCount = 1; });
         },
         "Ein Index der Tabelle 'Konto'"},  // it has one entry too many
        {[&](PageStore& store) {
             const auto page = store.change(root(store));
             base::putU16(page, 2, 3616);
             std::fill(page.begin() + kIndexMaskOffset, page.end(), std::uint8_t{0});
         },
         "Der Index 'Name' der Tabelle 'Konto' hat 0 Einträge für 2 Datensätze"}};
    for (const auto& [damage, words] : damages) {
        test::MemoryPageStore store(test::sampleFile({test::kontoTable()}));
        damage(store);
        try {
            compacted(store.file());
            ADD_FAILURE() << "no error, wanted: " << words;
        } catch (const base::RuntimeError& error) {
            EXPECT_NE(base::toUtf8(error.description()).find(words), std::string::npos) << error.what();
        }
    }
}

TEST(Comparison, ReportsEveryDifference) {
    const Bytes original = relatedTables(), sound = compacted(original);
    ASSERT_EQ(difference(original, sound), "");
    const auto edit = [](const std::function<void(TableDefinition&)>& how) {
        return [how](WrittenFile& file) { test::editDefinition(file.store, u"Konten", how); };
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
        const std::string text = difference(original, file.store.file());
        EXPECT_NE(text.find(found), std::string::npos) << "wanted " << found << ", found " << text;
    }
}

}  // namespace
}  // namespace jet
