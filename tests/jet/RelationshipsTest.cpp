#include <gtest/gtest.h>

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
    design.indexes = {{u"PrimaryKey", {{u"Nr"}}, true}, {u"Zu", {{u"Zu", false}}}};
    return {design, std::move(rows)};
}

/// `table`.Zu refers to `referenced`.Nr.
void relate(WrittenFile& file, base::TextView table, base::TextView referenced, std::uint8_t updateRule = 0,
            std::uint8_t deleteRule = 0) {
    test::relate(file.store, table, u"Zu", referenced, u"Nr", updateRule, deleteRule);
}

/// Families: 1 has children 11 and 12, 11 has 111; 2 has none.
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

TEST(Relationships, ARowWithOthersBehindItStaysAsItIs) {
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

TEST(Relationships, DeletesAlongOverSeveralTables) {
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
