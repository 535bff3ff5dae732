#include <gtest/gtest.h>

#include "jet/table/Catalog.h"
#include "tests/jet/PagesInMemory.h"
#include "tests/jet/WrittenFile.h"
#include "tests/support/RelatedTables.h"
#include "tests/support/SoundFile.h"

namespace jet {
namespace {

using base::Null;
using base::Text;

using test::kCascade;
using test::kSetNull;

test::SampleTable tableOf(const Text& name, test::Rows rows) {
    TableDesign design;
    design.name = name;
    design.columns = {{u"Nr", ColumnType::Long}, {u"Zu", ColumnType::Long}, {u"Text", ColumnType::Memo}};
    design.indexes = {{u"PrimaryKey", {{u"Nr"}}, true}, {u"Zu", {{u"Zu", false}}}, {u"Zwei", {{u"Nr"}, {u"Zu"}}}};
    return {design, std::move(rows)};
}

/// `table`.Zu refers to `referenced`.Nr.
void relate(WrittenFile& file, base::TextView table, base::TextView referenced, std::uint8_t updateRule = 0,
            std::uint8_t deleteRule = 0) {
    test::relate(file.store, table, u"Zu", referenced, u"Nr", updateRule, deleteRule);
}

/// Families: 1 has the children 11 and 12, 11 has the child 111, 2 has no children.
WrittenFile families() {
    const base::Value note = Text(5000, u'n');
    return WrittenFile({tableOf(u"A", {{1, Null{}, note}, {2, Null{}, note}}),
                        tableOf(u"B", {{11, 1, note}, {12, 1, note}}), tableOf(u"C", {{111, 11, note}})});
}

std::string outcome(WrittenFile& file, const std::function<void()>& step) {
    file.store.settle();
    std::string error = errorOf(step);
    if (error != "no error") {
        EXPECT_EQ(file.store.changedPages(), 0U) << error;
    }
    EXPECT_EQ(test::faultsIn(file.store), "") << error;
    return error;
}

TEST(Relationships, ARowNeedsTheOneItRefersTo) {
    WrittenFile file = families();
    relate(file, u"B", u"A");
    const std::string missing = "der Tabelle 'A' mit diesem Datensatz in Beziehung stehen muss";
    const auto insert = [&](const base::Value& reference) {
        static std::int32_t number = 20;
        return outcome(file, [&] { file.writer(u"B").insert({{{0, ++number}, {1, reference}}}); });
    };
    EXPECT_EQ(insert(std::int32_t{2}), "no error");
    EXPECT_EQ(insert(Null{}), "no error");
    EXPECT_NE(insert(std::int32_t{3}).find(missing), std::string::npos);
    const auto move = [&](const base::Value& reference) {
        return outcome(file, [&] { file.writer(u"B").update(file.find(u"B", 12), {{{1, reference}}}); });
    };
    EXPECT_EQ(move(std::int32_t{2}), "no error");
    EXPECT_EQ(move(Null{}), "no error");
    EXPECT_NE(move(std::int32_t{-1}).find(missing), std::string::npos);
}

TEST(Relationships, HoldBetweenColumnsOfAnyType) {
    const base::Guid guid{{1, 2, 3}};
    const struct {
        ColumnType type;
        base::Value there;
        base::Value missing;
        ColumnType referring = type;
    } cases[] = {
        {ColumnType::Byte, std::uint8_t{7}, std::int16_t{300}, ColumnType::Integer},
        {ColumnType::Currency, base::Currency{-12345}, base::Currency{12345}},
        {ColumnType::Single, 0.1F, 0.0F},
        {ColumnType::Double, 0.1, -0.1},
        {ColumnType::DateTime, base::Date{38000.25}, base::Date{38000}},
        {ColumnType::Text, Text(u"Müller"), Text(u"Muller")},
        {ColumnType::Guid, guid, base::Guid{}},
        {ColumnType::Numeric, base::Decimal{true, 0, {5, 0, 0, 0}}, base::Decimal{false, 0, {5, 0, 0, 0}}},
        // The key of this value is the beginning of all other keys.
        {ColumnType::Binary, base::Bytes{}, base::Bytes(8, 1)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(static_cast<int>(c.type));
        const auto table = [&](const Text& name, ColumnType type, test::Rows rows) {
            TableDesign design{.name = name,
                               .columns = {{u"Nr", ColumnType::Long}, {u"Wert", type, 20}},
                               .indexes = {{u"Wert", {{u"Wert"}}}}};
            return test::SampleTable{design, std::move(rows)};
        };
        const base::Value other =
            c.type == ColumnType::Binary ? base::Value(base::Bytes(8, 0)) : base::Value(base::Null{});
        WrittenFile file({table(u"A", c.type, {{1, c.there}, {2, other}}), table(u"B", c.referring, {{10, other}})});
        test::relate(file.store, u"B", u"Wert", u"A", u"Wert");
        const auto insert = [&](const base::Value& value) {
            return outcome(file, [&] { file.writer(u"B").insert({{{0, std::int32_t{11}}, {1, value}}}); });
        };
        EXPECT_NE(insert(c.missing).find("in Beziehung stehen muss"), std::string::npos);
        EXPECT_EQ(insert(c.there), "no error");
        EXPECT_NE(outcome(file, [&] { file.writer(u"A").remove(file.find(u"A", 1)); }).find("Tabelle 'B'"),
                  std::string::npos);
    }
}

TEST(Relationships, ADamagedCounterpartIsNotTakenForAMissingOne) {
    const auto change = [](WrittenFile& file, const auto& edit) {
        TableDefinition definition = openTable(file.store, u"A")->definition();
        edit(definition,
             *std::ranges::find(definition.logicalIndexes, LogicalIndex::Kind::ForeignKey, &LogicalIndex::kind));
        const auto pages = definitionPages(definition.encode(), definition.chain);
        std::ranges::copy(pages[0], file.store.change(definition.chain[0]).begin());
    };
    const struct {
        const char* text;
        std::function<void(TableDefinition&, LogicalIndex&)> edit;
    } cases[] = {
        {"Gegenstück der Beziehung", [](auto&, LogicalIndex& side) { side.number = 99; }},
        {"Gegenstück der Beziehung", [](auto&, LogicalIndex& side) { ++side.partnerTable; }},
        {"hat auf beiden Seiten andere Spalten", [](auto&, LogicalIndex& side) { side.dataBlock = 2; }},
        {"verbindet Spalten verschiedener Art",
         [](TableDefinition& table, auto&) { table.columns[0].type = ColumnType::Single; }},
    };
    for (const auto& c : cases) {
        WrittenFile file = families();
        relate(file, u"B", u"A");
        change(file, c.edit);
        const std::string error = errorOf([&] { file.writer(u"B").remove(file.find(u"B", 11)); }) + errorOf([&] {
                                      file.writer(u"B").insert({{{0, std::int32_t{13}}, {1, std::int32_t{1}}}});
                                  });
        EXPECT_NE(error.find(c.text), std::string::npos) << error;
    }
}

TEST(Relationships, ARowThatOthersReferToIsNotChanged) {
    struct Case {
        std::uint8_t updateRule;
        std::uint8_t deleteRule;
        const char* updated;
        const char* removed;
    };
    const Case cases[] = {
        {0, 0, "die Tabelle 'B' in Beziehung stehende", "die Tabelle 'B' in Beziehung stehende"},
        {kCascade, 0, "an die Tabelle 'B' weitergegeben", "die Tabelle 'B' in Beziehung stehende"},
        {0, kSetNull, "die Tabelle 'B' in Beziehung stehende", "'B' müsste Nullwerte bekommen"},
        {0, kCascade, "die Tabelle 'B' in Beziehung stehende", "no error"},
    };
    for (const Case& c : cases) {
        WrittenFile file = families();
        relate(file, u"B", u"A", c.updateRule, c.deleteRule);
        const auto update = [&](std::int32_t from, std::int32_t to) {
            return outcome(file, [&] { file.writer(u"A").update(file.find(u"A", from), {{{0, to}}}); });
        };
        EXPECT_NE(update(1, 9).find(c.updated), std::string::npos);
        EXPECT_EQ(update(2, 8), "no error") << "nobody refers to it";
        EXPECT_EQ(outcome(file, [&] { file.writer(u"A").remove(file.find(u"A", 8)); }), "no error");
        const std::string removed = outcome(file, [&] { file.writer(u"A").remove(file.find(u"A", 1)); });
        EXPECT_NE(removed.find(c.removed), std::string::npos) << removed;
    }
}

TEST(Relationships, DeletionsCascadeOverSeveralTables) {
    WrittenFile file = families();
    relate(file, u"B", u"A", 0, kCascade);
    relate(file, u"C", u"B", 0, kCascade);
    EXPECT_EQ(outcome(file, [&] { file.writer(u"A").remove(file.find(u"A", 1)); }), "no error");
    EXPECT_EQ(file.rows(u"A").size(), 1U);
    EXPECT_TRUE(file.rows(u"B").empty());
    EXPECT_TRUE(file.rows(u"C").empty());

    WrittenFile halted = families();
    relate(halted, u"B", u"A", 0, kCascade);
    relate(halted, u"C", u"B");
    EXPECT_NE(outcome(halted, [&] { halted.writer(u"A").remove(halted.find(u"A", 1)); }).find("Tabelle 'C'"),
              std::string::npos);
}

TEST(Relationships, ATableMayReferToItself) {
    WrittenFile file = families();
    relate(file, u"A", u"A", 0, kCascade);
    const auto insert = [&](std::int32_t number, std::int32_t reference) {
        return outcome(file, [&] { file.writer(u"A").insert({{{0, number}, {1, reference}}}); });
    };
    EXPECT_EQ(insert(3, 3), "no error") << "a row that refers to itself";
    EXPECT_EQ(insert(4, 3), "no error");
    EXPECT_EQ(insert(5, 4), "no error");
    EXPECT_NE(insert(6, 7), "no error");
    EXPECT_EQ(outcome(file,
                      [&] {
                          file.writer(u"A").update(file.find(u"A", 3), {{{1, std::int32_t{5}}}});
                      }),
              "no error");
    EXPECT_EQ(outcome(file, [&] { file.writer(u"A").remove(file.find(u"A", 4)); }), "no error") << "a ring";
    EXPECT_EQ(file.rows(u"A").size(), 2U);
}

}  // namespace
}  // namespace jet
