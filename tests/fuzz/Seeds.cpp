#include "tests/fuzz/Seeds.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

#include "jet/table/Catalog.h"
#include "jet/tree/IndexNode.h"
#include "tests/support/MemoryPageStore.h"
#include "tests/support/RandomValues.h"
#include "tests/support/RelatedTables.h"
#include "tests/support/SampleFile.h"

namespace jet {
namespace {

using base::Null;
using base::Value;

constexpr std::uint8_t kUnique = IndexDefinition::kUnique;
constexpr std::uint8_t kKey = IndexDefinition::kUnique | IndexDefinition::kRequired;
constexpr std::uint8_t kIgnoreNulls = IndexDefinition::kIgnoreNulls;

/// Long names, so that a few rows already fill several leaves.
base::Text longName(std::int32_t i) {
    return u"Müller-Straßenbäcker & Söhne, Niederlassung Nr. " + base::decimal((i * 7919) % 10007) + u" (Außenstelle)";
}

test::SampleTable accounts(std::int32_t count) {
    using enum ColumnType;
    test::SampleTable table{{u"Benutzerkonto",
                             {{u"BenKTO_ID", Long, 0, true},
                              {u"BenKTO_Name", Text, 100},
                              {u"BenKTO_Pass", Text, 64},
                              {u"BenKTO_ServerPath", Text, 255},
                              {u"BenKTO_R_ProgUpdate", Boolean}},
                             {{u"PrimaryKey", {{u"BenKTO_ID"}}, true}, {u"BenKTO_Name", {{u"BenKTO_Name"}}}}},
                            {}};
    for (std::int32_t id = 1; id <= count; ++id) {
        table.rows.push_back(
            {id, longName(id), base::Text(64, u'a'), base::Text(u"\\\\server\\konten\\") + longName(id), id % 3 == 0});
        if (id % 10 == 0) table.rows.back()[1] = Null{};
    }
    return table;
}

/// Moves a row's data to another slot, as if the row had outgrown its own.
void moveRow(test::MemoryPageStore& store, RowPointer row) {
    const auto page = store.change(row.page);
    const auto bytes = DataPage(store.page(row.page)).slot(row.slot).bytes;
    const auto target = appendRow(page, base::Bytes(bytes.begin(), bytes.end()), SlotState::Hidden);
    const std::size_t slot = kDataPageHeaderBytes + kSlotBytes * row.slot;
    const std::uint16_t offset = base::ByteView(page).u16(slot);
    base::putU16(page, slot, static_cast<std::uint16_t>(offset | 0x4000U));
    base::putU32(page, offset, RowPointer{row.page, target.value()}.packed());
}

/// Hides the table that Access makes for itself, and adds a query.
void addObjectsOfAccess(test::MemoryPageStore& store) {
    constexpr std::uint32_t kQuery = 0x80000123;
    const RowPointer row = openTable(store, u"MSysNavPaneGroups")->entry().row;
    const Table objects = *openTable(store, u"MSysObjects");
    const Row found = objects.rowAt(row);
    const auto flags = found.view.stored(*objects.definition().column(u"Flags"));
    const auto offset = flags.data() - store.page(row.page).bytes.bytes().data();
    store.change(row.page)[static_cast<std::size_t>(offset)] = 0x0A;
    test::addSystemRow(store, u"MSysObjects",
                       objectRow(kQuery, CatalogEntry::kTablesContainer, u"Abfrage", 5, 0, BuiltInAccount::Admin,
                                 knownCreationStamp()));
    test::addSystemRow(store, u"MSysQueries",
                       {static_cast<std::int32_t>(kQuery), std::uint8_t{5}, base::Bytes{0, 1}, base::Text(u"Konten"),
                        Null{}, base::Text(3000, u'q'), std::int16_t{1}, Null{}});
}

/// Keys of up to 900 bytes, which make trees of several levels, and rows that grow beyond their page.
test::SampleTable deepTable() {
    using enum ColumnType;
    test::SampleTable table{{u"Tief",
                             {{u"Nr", Long, 0, true},
                              {u"Schlüssel", Binary, 255},
                              {u"Zweiter", Binary, 255},
                              {u"Text", Text, 100},
                              {u"Länge", Text, 255}},
                             {{u"PrimaryKey", {{u"Nr"}}, true, kKey},
                              {u"Schlüssel", {{u"Schlüssel", false}}, false, kUnique},
                              {u"Alle", {{u"Schlüssel"}, {u"Zweiter"}, {u"Text", false}}, false, kUnique},
                              {u"Text", {{u"Text"}, {u"Schlüssel"}}, false, kIgnoreNulls}}},
                            {}};
    const auto bytes = [](std::int32_t length, std::int32_t byte) {
        return base::Bytes(static_cast<std::size_t>(length % 256), static_cast<std::uint8_t>(byte));
    };
    for (std::int32_t i = 1; i <= 200; ++i)
        table.rows.push_back({i, bytes(i * 37, i / 2), bytes(255 - i % 20, i), longName(i),
                              base::Text(static_cast<std::size_t>(i % 50), u'Ω')});
    return table;
}

/// Gives the nodes of all indexes the shape that other writers use: without links, and every second without a tail.
void reshapeNodes(test::MemoryPageStore& store, base::TextView tableName) {
    const PageNumber owner = openTable(store, tableName)->definition().page;
    for (PageNumber page = 0; page < store.pageCount(); ++page) {
        if (store.page(page).kind() != PageKind::IndexNode || store.page(page).bytes.u32(4) != owner) continue;
        IndexNode node(IndexPage(store.page(page), owner));
        node.previous = node.next = 0;
        if (node.tail == 0 && node.size() > 1) {
            node.tail = node.child(node.size() - 1);
            node.erase(node.size() - 1);
        } else if (const IndexPage last(store.page(node.tail), owner); last.isLeaf()) {
            IndexNode whole = node;
            whole.insert(whole.size(), last.entry(last.size() - 1), std::exchange(whole.tail, 0));
            if (page % 2 == 0 && whole.fits()) node = whole;
        }
        node.write(store.change(page), owner, store.page(page).bytes.u8(26));
    }
}

void addCorpus(std::vector<Seed>& all) {
    const char* folder = std::getenv("TOLV_CORPUS");
    if (folder == nullptr) return;
    for (const auto& file : std::filesystem::directory_iterator(folder)) {
        if (file.path().extension() != ".mdb") continue;
        std::ifstream in(file.path(), std::ios::binary);
        all.push_back({file.path().filename().string(),
                       base::Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>())});
    }
}

}  // namespace

test::SampleTable everyType() {
    using enum ColumnType;
    TableDesign design{u"Alles",
                       {{u"Nr", Long, 0, true},
                        {u"Byte", Byte},
                        {u"Integer", Integer},
                        {u"Long", Long},
                        {u"Currency", Currency},
                        {u"Single", Single},
                        {u"Double", Double},
                        {u"Date", DateTime},
                        {u"Binary", Binary, 40},
                        {u"Text", Text, 50},
                        {u"Guid", Guid},
                        {u"Boolean", Boolean},
                        {.name = u"Numeric", .type = Numeric, .scale = 3},
                        {u"Memo", Memo},
                        {u"Ole", Ole}},
                       {{u"PrimaryKey", {{u"Nr"}}, true},
                        {u"Mehrere", {{u"Text", false}, {u"Integer", true}}},
                        {u"Byte", {{u"Byte"}, {u"Long"}}, false, kUnique},
                        {u"Integer", {{u"Integer"}}, false, IndexDefinition::kRequired},
                        {u"Long", {{u"Long", false}}},
                        {u"Currency", {{u"Currency"}}, false, kUnique},
                        {u"Single", {{u"Single", false}}},
                        {u"Double", {{u"Double"}, {u"Single"}}, false, kUnique},
                        {u"Date", {{u"Date"}}},
                        {u"Binary", {{u"Binary"}}, false, kIgnoreNulls},
                        {u"Binary2", {{u"Binary", false}, {u"Byte"}}, false, kUnique},
                        {u"Guid", {{u"Guid"}}, false, kIgnoreNulls | kUnique},
                        {u"Boolean", {{u"Boolean", false}}},
                        {u"Numeric", {{u"Numeric"}}},
                        {u"Numeric2", {{u"Numeric", false}}}}};
    for (ColumnDesign& column : design.columns)
        column.name += base::Text(50, u'ß');
    for (IndexDesign& index : design.indexes) {
        index.name += base::Text(50, u'ß');
        for (IndexColumnDesign& part : index.columns)
            part.name += base::Text(50, u'ß');
    }
    test::SampleTable table{design, {}};
    std::mt19937 random(1);
    test::RandomValues values(random);
    for (std::int32_t i = 1; i <= 20; ++i) {
        std::vector<Value>& row = table.rows.emplace_back();
        for (const Column& column : makeDefinition(design).columns)
            row.push_back(values.value(column));
        row[0] = i;
        row[1] = static_cast<std::uint8_t>(i);
        row[2] = static_cast<std::int16_t>(-i);
        row[4] = base::Currency{i * 12345LL};
        row[6] = -1.25 * i;
        row[10] = base::Guid{{static_cast<std::uint8_t>(i)}};
    }
    return table;
}

base::Bytes relatedTables(std::int32_t count) {
    using enum ColumnType;
    test::SampleTable accounts{
        {u"Konten",
         {{u"ID", Long, 0, true}, {u"Name", Text, 100}, {u"Merkmal", Text, 20}, {u"Notiz", Memo}, {u"Aktiv", Boolean}},
         {{u"PrimaryKey", {{u"ID"}}, true, kKey},
          {u"Name", {{u"Name"}, {u"ID", false}}},
          {u"Merkmal", {{u"Merkmal"}}, false, kIgnoreNulls}}},
        {}};
    constexpr std::size_t kNoteUnits[] = {0, 20, 300, 10000, 200};  // in the row, in a row of its own, in a chain
    for (std::int32_t i = 0; i < count; ++i) {
        accounts.rows.push_back({i + 1, longName(i), Null{}, Null{}, i % 3 == 0});
        if (i % 4 == 0) accounts.rows.back()[2] = u"Merkmal " + base::decimal(i);
        if (i > 0 && i < 5) accounts.rows.back()[3] = base::Text(kNoteUnits[i], u'm');
    }
    test::SampleTable second{{u"Zweite", {{u"Nr", Long}, {u"Text", Text, 50}}, {}}, {}};
    second.design.indexes = {{u"Nr", {{u"Nr"}}, false, kUnique}};
    for (std::int32_t i = 1; i <= 10; ++i)
        second.rows.push_back({i, u"Zeile " + base::decimal(i)});
    const test::SampleTable groups{
        {u"MSysNavPaneGroups", {{u"Id", Long}, {u"ObjectID", Long}}, {{u"ObjectID", {{u"ObjectID"}}, false, 0}}},
        {{1, 27}, {2, 16}, {3, 2}}};
    test::MemoryPageStore store(test::sampleFile({accounts, second, groups}));
    test::relate(store, u"Zweite", u"Nr", u"Konten", u"ID", 0, test::kCascade);
    moveRow(store, {*openTable(store, u"Zweite")->ownedPages().next(0), 2});
    addObjectsOfAccess(store);
    return store.file();
}

base::Bytes deepTrees() {
    test::MemoryPageStore store(test::sampleFile({deepTable()}));
    reshapeNodes(store, u"Tief");
    return store.file();
}

std::vector<Seed> seeds() {
    std::vector<Seed> all = {
        {"empty", test::sampleFile({accounts(0)}), u"Benutzerkonto"},
        {"accounts", test::sampleFile({accounts(150)}, base::Text(kSeedPassword)), u"Benutzerkonto"},
        {"types", test::sampleFile({everyType()}), u"Alles"},
        {"related", relatedTables(), u"Konten"},
        {"deep", deepTrees(), u"Tief"},
    };
    addCorpus(all);
    return all;
}

}  // namespace jet
