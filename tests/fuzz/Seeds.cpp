#include "tests/fuzz/Seeds.h"

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "jet/fresh/Creator.h"
#include "jet/storage/MemoryIo.h"
#include "tests/support/MemoryPageStore.h"
#include "tests/support/RelatedTables.h"

namespace jet {
namespace {

using base::Value;

/// Long names, so that a few rows already fill several leaves.
base::Text longName(std::int32_t i) {
    return u"Müller-Straßenbäcker & Söhne, Niederlassung Nr. " + base::decimal((i * 7919) % 10007) + u" (Außenstelle)";
}

TableDesign accountTable() {
    return {.name = u"Benutzerkonto",
            .columns = {{.name = u"BenKTO_ID", .type = ColumnType::Long, .isAutoNumber = true},
                        {.name = u"BenKTO_Name", .type = ColumnType::Text, .maxUnits = 100},
                        {.name = u"BenKTO_Pass", .type = ColumnType::Text, .maxUnits = 64},
                        {.name = u"BenKTO_ServerPath", .type = ColumnType::Text, .maxUnits = 255},
                        {.name = u"BenKTO_R_ProgUpdate", .type = ColumnType::Boolean}},
            .indexes = {{.name = u"PrimaryKey", .columns = {{u"BenKTO_ID"}}, .isPrimary = true},
                        {.name = u"BenKTO_Name", .columns = {{u"BenKTO_Name"}}}}};
}

Creator::RowFeed accountRows(std::int32_t count) {
    return [count, id = 0](std::vector<Value>& row) mutable {
        if (id == count) return false;
        ++id;
        row = {id, longName(id), base::Text(64, u'a'), base::Text(u"\\\\server\\konten\\") + longName(id), id % 3 == 0};
        if (id % 10 == 0) row[1] = base::Null{};
        return true;
    };
}

TableDesign everyType() {
    const auto column = [](base::Text name, ColumnType type, std::uint16_t maxUnits = 0) {
        return ColumnDesign{.name = std::move(name), .type = type, .maxUnits = maxUnits};
    };
    constexpr std::uint8_t kUnique = IndexDefinition::kUnique;
    ColumnDesign number = column(u"Nr", ColumnType::Long);
    number.isAutoNumber = true;
    ColumnDesign numeric = column(u"Numeric", ColumnType::Numeric);
    numeric.scale = 3;
    return {.name = u"Alles",
            .columns = {number, column(u"Byte", ColumnType::Byte), column(u"Integer", ColumnType::Integer),
                        column(u"Long", ColumnType::Long), column(u"Currency", ColumnType::Currency),
                        column(u"Single", ColumnType::Single), column(u"Double", ColumnType::Double),
                        column(u"Date", ColumnType::DateTime), column(u"Binary", ColumnType::Binary, 40),
                        column(u"Text", ColumnType::Text, 50), column(u"Guid", ColumnType::Guid),
                        column(u"Boolean", ColumnType::Boolean), numeric, column(u"Memo", ColumnType::Memo),
                        column(u"Ole", ColumnType::Ole)},
            .indexes = {{.name = u"PrimaryKey", .columns = {{u"Nr"}}, .isPrimary = true},
                        {.name = u"Mehrere", .columns = {{u"Text", false}, {u"Integer", true}}},
                        {.name = u"Byte", .columns = {{u"Byte"}, {u"Long"}}, .flags = kUnique},
                        {.name = u"Integer", .columns = {{u"Integer"}}, .flags = IndexDefinition::kRequired},
                        {.name = u"Long", .columns = {{u"Long", false}}},
                        {.name = u"Currency", .columns = {{u"Currency"}}, .flags = kUnique},
                        {.name = u"Single", .columns = {{u"Single", false}}},
                        {.name = u"Double", .columns = {{u"Double"}, {u"Single"}}, .flags = kUnique},
                        {.name = u"Date", .columns = {{u"Date"}}},
                        {.name = u"Binary", .columns = {{u"Binary"}}, .flags = IndexDefinition::kIgnoreNulls},
                        {.name = u"Binary2", .columns = {{u"Binary", false}, {u"Byte"}}, .flags = kUnique},
                        {.name = u"Guid",
                         .columns = {{u"Guid"}},
                         .flags = IndexDefinition::kIgnoreNulls | IndexDefinition::kUnique},
                        {.name = u"Boolean", .columns = {{u"Boolean", false}}},
                        {.name = u"Numeric", .columns = {{u"Numeric"}}},
                        {.name = u"Numeric2", .columns = {{u"Numeric", false}}}}};
}

Creator::RowFeed everyTypeRows() {
    return [i = 0](std::vector<Value>& row) mutable {
        if (i == 20) return false;
        ++i;
        row = {i,
               static_cast<std::uint8_t>(i),
               static_cast<std::int16_t>(-i),
               i * 100000,
               base::Currency{i * 12345LL},
               0.5F * static_cast<float>(i),
               -1.25 * i,
               base::Date{38000.5 + i},
               base::Bytes(static_cast<std::size_t>(i), 0xA5),
               base::Text(static_cast<std::size_t>(i), u'ß'),
               base::Guid{{static_cast<std::uint8_t>(i)}},
               i % 2 == 0,
               base::Decimal{i % 3 == 0, 3, {static_cast<std::uint32_t>(i), 0, 0, 0}},
               base::Text(static_cast<std::size_t>(10 * i), u'n'),
               base::Bytes(static_cast<std::size_t>(20 * i), 0xA5)};
        if (i % 4 == 0) row[8] = base::Null{};
        return true;
    };
}

Seed make(std::string name, base::Text password, const auto& fill) {
    MemoryIo io;
    Creator creator(io, std::move(password));
    fill(creator);
    creator.finish();
    return {std::move(name), io.bytes()};
}

/// Two tables, one of which refers to the other, with long values of every kind.
Seed related() {
    static constexpr std::size_t kNoteUnits[] = {20, 300, 4500, 2500};
    const auto rows = [](std::int32_t count) {
        return [count, i = 0](std::vector<Value>& row) mutable {
            if (i == count) return false;
            const std::size_t units = kNoteUnits[static_cast<std::size_t>(i) % std::size(kNoteUnits)];
            ++i;
            row = {i, i % 7 == 0 ? Value(base::Null{}) : Value(1 + i % 5), base::Text(units, u'n'),
                   base::Bytes(i % 3 == 0 ? 200U : 5000U, 0xA5)};
            return true;
        };
    };
    constexpr std::uint8_t kKey = IndexDefinition::kUnique | IndexDefinition::kRequired;
    TableDesign design{.name = {},
                       .columns = {{.name = u"Nr", .type = ColumnType::Long, .isAutoNumber = true},
                                   {.name = u"Zu", .type = ColumnType::Long},
                                   {.name = u"Notiz", .type = ColumnType::Memo},
                                   {.name = u"Bild", .type = ColumnType::Ole}},
                       .indexes = {{.name = u"PrimaryKey", .columns = {{u"Nr"}}, .isPrimary = true, .flags = kKey},
                                   {.name = u"Zu", .columns = {{u"Zu"}}}}};
    const Seed tables = make("related", {}, [&](Creator& creator) {
        for (const auto& [name, count] : {std::pair{u"Konto", 6}, std::pair{u"Sitzung", 12}}) {
            design.name = name;
            creator.addTable(design, rows(count));
        }
    });
    test::MemoryPageStore store(tables.file);
    test::relate(store, u"Sitzung", u"Zu", u"Konto", u"Nr", 0, test::kCascade);
    return {tables.name, store.file()};
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

std::vector<Seed> seeds() {
    std::vector<Seed> all;
    all.push_back(make("empty", {}, [](Creator& creator) { creator.addTable(accountTable(), accountRows(0)); }));
    all.push_back(make("accounts", base::Text(kSeedPassword),
                       [](Creator& creator) { creator.addTable(accountTable(), accountRows(150)); }));
    all.push_back(make("types", {}, [](Creator& creator) { creator.addTable(everyType(), everyTypeRows()); }));
    all.push_back(related());
    addCorpus(all);
    return all;
}

}  // namespace jet
