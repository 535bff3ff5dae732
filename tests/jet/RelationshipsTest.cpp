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

using Step = std::function<void(WrittenFile&)>;

Step insert(base::TextView table, std::int32_t number, base::Value reference) {
    return [=](WrittenFile& file) { file.writer(table).insert({{{0, number}, {1, reference}}}); };
}
Step refer(base::TextView table, std::int32_t number, base::Value reference) {
    return [=](WrittenFile& file) { file.writer(table).update(file.find(table, number), {{{1, reference}}}); };
}
Step renumber(base::TextView table, std::int32_t number, std::int32_t to) {
    return [=](WrittenFile& file) { file.writer(table).update(file.find(table, number), {{{0, to}}}); };
}
Step remove(base::TextView table, std::int32_t number) {
    return [=](WrittenFile& file) { file.writer(table).remove(file.find(table, number)); };
}

struct Relation {
    base::TextView table, referenced;  ///< `table`.Zu refers to `referenced`.Nr
    std::uint8_t updateRule = 0, deleteRule = 0;
};

TEST(Relationships, AllowRefuseAndCascadeChanges) {
    const std::string missing = "der Tabelle 'A' mit diesem Datensatz in Beziehung stehen muss";
    const std::string referred = "die Tabelle 'B' in Beziehung stehende", done = "no error";
    const Relation plain{u"B", u"A"}, cascading{u"B", u"A", 0, kCascade}, toItself{u"A", u"A", 0, kCascade};
    const Relation updating{u"B", u"A", kCascade}, setting{u"B", u"A", 0, kSetNull};
    const struct {
        std::vector<Relation> relations;
        std::vector<Step> steps;
        std::string outcome;  ///< part of the error of the last step
        std::string rows = "1 2 11 12 111 ";
    } cases[] = {
        // A row must refer to an existing row or to none.
        {{plain}, {insert(u"B", 21, 2)}, done, "1 2 11 12 21 111 "},
        {{plain}, {insert(u"B", 21, Null{})}, done, "1 2 11 12 21 111 "},
        {{plain}, {insert(u"B", 21, 3)}, missing},
        {{plain}, {refer(u"B", 12, 2)}, done},
        {{plain}, {refer(u"B", 12, Null{})}, done},
        {{plain}, {refer(u"B", 12, -1)}, missing},
        // A row to which others refer.
        {{plain}, {renumber(u"A", 1, 9)}, referred},
        {{plain}, {remove(u"A", 1)}, referred},
        {{updating}, {renumber(u"A", 1, 9)}, "an die Tabelle 'B' weitergegeben"},
        {{updating}, {remove(u"A", 1)}, referred},
        {{setting}, {renumber(u"A", 1, 9)}, referred},
        {{setting}, {remove(u"A", 1)}, "'B' müsste Nullwerte bekommen"},
        {{cascading}, {renumber(u"A", 1, 9)}, referred},
        // A row to which no other refers.
        {{updating}, {renumber(u"A", 2, 8)}, done, "1 8 11 12 111 "},
        {{setting}, {remove(u"A", 2)}, done, "1 11 12 111 "},
        // Over several tables.
        {{cascading}, {remove(u"A", 1)}, done, "2 111 "},
        {{cascading, {u"C", u"B", 0, kCascade}}, {remove(u"A", 1)}, done, "2 "},
        {{cascading, {u"C", u"B"}}, {remove(u"A", 1)}, "Tabelle 'C'"},
        // A table may refer to itself, a row to itself, and rows to each other in a ring.
        {{toItself}, {insert(u"A", 3, 3), remove(u"A", 3)}, done},
        {{toItself}, {insert(u"A", 3, 4)}, missing},
        {{toItself}, {refer(u"A", 1, 2), refer(u"A", 2, 1), insert(u"A", 3, 2), remove(u"A", 1)}, done, "11 12 111 "},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(&c - cases);
        WrittenFile file = families();
        for (const Relation& each : c.relations)
            test::relate(file.store, each.table, u"Zu", each.referenced, u"Nr", each.updateRule, each.deleteRule);
        std::string found;
        for (const Step& step : c.steps)
            found = outcome(file, [&] { step(file); });
        EXPECT_NE(found.find(c.outcome), std::string::npos) << found;
        std::string rows;
        for (const base::TextView table : {u"A", u"B", u"C"})
            for (const auto& row : file.rows(table))
                rows += std::to_string(row.first) + " ";
        EXPECT_EQ(rows, c.rows);
    }
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
        // The key of this value is a prefix of all other keys.
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
        const auto found = [&](const Step& step) { return outcome(file, [&] { step(file); }); };
        EXPECT_NE(found(insert(u"B", 11, c.missing)).find("in Beziehung stehen muss"), std::string::npos);
        EXPECT_EQ(found(insert(u"B", 11, c.there)), "no error");
        EXPECT_NE(found(remove(u"A", 1)).find("Tabelle 'B'"), std::string::npos);
    }
}

TEST(Relationships, ADamagedOtherSideIsReported) {
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
        test::relate(file.store, u"B", u"Zu", u"A", u"Nr");
        test::editDefinition(file.store, u"A", [&](TableDefinition& definition) {
            c.edit(definition,
                   *std::ranges::find(definition.logicalIndexes, LogicalIndex::Kind::ForeignKey, &LogicalIndex::kind));
        });
        const std::string error =
            errorOf([&] { remove(u"B", 11)(file); }) + errorOf([&] { insert(u"B", 13, 1)(file); });
        EXPECT_NE(error.find(c.text), std::string::npos) << error;
    }
}

}  // namespace
}  // namespace jet
