#include <chrono>
#include <cmath>
#include <gmock/gmock.h>
#include <random>

#include "jet/expression/Lexer.h"
#include "jet/expression/LikePattern.h"
#include "jet/expression/Number.h"
#include "jet/sql/SelectExecutor.h"
#include "tests/support/RandomValues.h"
#include "tests/support/SampleFile.h"

namespace jet::sql {
namespace {

using base::Value;
using testing::ElementsAreArray;
using Ids = std::vector<std::int32_t>;

base::Bytes sample() {
    test::SampleTable table;
    table.design.name = u"Konto";
    table.design.columns = {{u"Nr", ColumnType::Long},        {u"Name", ColumnType::Text, 50},
                            {u"Klasse", ColumnType::Integer}, {u"Geld", ColumnType::Currency},
                            {u"Maß", ColumnType::Double},     {u"Tag", ColumnType::DateTime},
                            {u"Ja", ColumnType::Boolean},     {u"Notiz", ColumnType::Memo},
                            {u"Kennung", ColumnType::Guid},   {u"Lang", ColumnType::Numeric}};
    table.design.columns.back().precision = 28;
    const Value null = base::Null{};
    const auto text = [](base::TextView units) { return Value(base::Text(units)); };
    const auto whole = [](int number) { return Value(static_cast<std::int16_t>(number)); };
    const auto money = [](std::int64_t tenThousandths) { return Value(base::Currency{tenThousandths}); };
    const auto day = [](double days) { return Value(base::Date{days}); };
    table.rows = {
        {1, text(u"Müller"), whole(3), money(125000), 0.1, day(38143.5), true, text(u"lang ßß")},
        {2, text(u"MÜLLER"), whole(-3), money(-1), 2.5, day(38143), false, null},
        {3, text(u"müller "), whole(0), money(0), 0.0, day(-1.25), true, text(u"")},
        {4, text(u"Mueller"), null, null, 1e300, null, false, null},
        {5, text(u"Strasse"), whole(32767), money(1), 3.0, day(36526), false, null},
        {6, text(u"Straße"), whole(3), money(30000), 0.30000000000000004, day(36526.25), true, text(u"100%_[x]")},
        {7, null, null, null, null, null, false, null},
        {8, text(u"O'Neil"), whole(100), money(125001), -0.0, day(0), false, null},
        {9, text(u""), whole(10), money(922337203685477), 1e-300, day(2), true, null},
        {10, text(u"Karl-Heinz"), whole(12), null, null, null, false, text(u"KARL-heinz  ")},
    };
    for (std::uint8_t i = 0; i < 10; ++i) {
        // 0, -1, 10^20 + 2, -3, 10^20 + 4 and so on.
        const bool isLong = i % 2 == 0 && i != 0;
        const base::Decimal number{
            i % 2 != 0, 0, {i + (isLong ? 0x63100000U : 0U), isLong ? 0x6BC75E2DU : 0U, isLong ? 5U : 0U, 0}};
        table.rows[i].emplace_back(base::Guid{{i, 2, 3, static_cast<std::uint8_t>(0xA0 - i)}});
        table.rows[i].emplace_back(number);
    }
    return test::sampleFile({table});
}

Ids idsWhere(base::TextView condition) {
    static const base::Bytes bytes = sample();
    Database database = test::openSample(bytes);
    ReadOperation operation = database.beginRead();
    const ResultSet rows = executeSelect(operation, u"SELECT * FROM Konto WHERE " + base::Text(condition));
    Ids ids;
    for (std::size_t row = 0; row < rows.rowCount(); ++row)
        ids.push_back(std::get<std::int32_t>(rows.value(row, 0)));
    return ids;
}

TEST(Conditions, SelectTheRowsForWhichTheyAreTrue) {
    const struct {
        base::Text condition;
        Ids ids;
    } cases[] = {
        // Texts are compared by their sort keys.
        {u"Name = 'müller'", {1, 2, 3}},
        {u"Name = 'MÜLLER  '", {1, 2, 3}},
        {u"Name <> 'Müller'", {4, 5, 6, 8, 9, 10}},
        {u"Name = 'strasse'", {5, 6}},
        {u"Name = 'KarlHeinz'", {}},
        {u"Name = \"O'Neil\" OR Name = 'O''Neil'", {8}},
        {u"Name = '  '", {9}},
        {u"Name < 'Mueller'", {9, 10}},
        {u"Name BETWEEN 'o' AND 'mueller'", {1, 2, 3, 4}},
        {u"Notiz = 'LANG SSSS'", {1}},
        // Numbers are compared by their values, whatever their types.
        {u"Nr=2", {2}},
        {u"5.0 = Nr", {5}},
        {u"Nr = 5.5", {}},
        {u"Nr > 99999999999999999999", {}},
        {u"Nr < 99999999999999999999 AND Nr > 8", {9, 10}},
        {u"Klasse = -3 OR Klasse = - -3", {1, 2, 6}},
        {u"Geld = 12.5", {1}},
        {u"Geld = 12.50010", {8}},
        {u"Geld > 12.500049999999", {8, 9}},
        {u"Geld = Nr", {}},
        {u"Geld = Klasse", {3, 6}},
        {u"Maß = 0.1", {1}},
        {u"Maß = 0.3", {}},
        {u"Maß = 0", {3, 8}},
        {u"Maß > 1e299", {4}},
        {u"Maß = Klasse", {3}},
        {u"Ja", {1, 3, 6, 9}},
        {u"Ja = TRUE AND Nr < 4", {1, 3}},
        {u"Ja = -1 AND NOT Klasse = 3", {3, 9}},
        {u"NOT Klasse", {3}},
        {u"(Nr = 2) = TRUE", {2}},
        // Dates are days; a literal is month/day/year, whatever the user's region.
        {u"Tag = #6/5/2004 12:00#", {1}},
        {u"Tag >= #2004-06-05# AND Tag < #6/5/2004 11:59:59 PM#", {1, 2}},
        {u"Tag = #12/29/1899 6:00 AM#", {3}},
        {u"Tag = #25/12/1999#", {}},
        {u"Tag = #1/1/00#", {5}},
        {u"Tag = 2", {9}},
        // GUIDs are compared digit by digit.
        {u"Kennung = {guid {A0030200-0000-0000-0000-000000000000}}", {1}},
        {u"Kennung = '{9f030201-0000-0000-0000-000000000000} ' OR Kennung IS NULL", {2}},
        {u"Kennung < { GUID {99030207-0000-0000-0000-000000000001} }", {8, 9, 10}},
        {u"Kennung IN ('{A0030200-0000-0000-0000-000000000000}', {guid {9E030202-0000-0000-0000-000000000000}})",
         {1, 3}},
        // Decimals are compared exactly with each other, with a double only as doubles.
        {u"Lang = -1", {2}},
        {u"Lang > 100000000000000000003", {5, 7, 9}},
        {u"Lang = 100000000000000000002.0", {3}},
        {u"Lang > 1e20", {}},
        {u"Lang = 1e20", {3, 5, 7, 9}},
        {u"Lang < Maß AND Lang < Klasse AND NOT Lang", {1}},
        {u"Lang < Geld AND Lang", {2, 6, 8}},
        // Null is a third truth value.
        {u"Klasse = NULL", {}},
        {u"NOT Klasse = NULL", {}},
        {u"Klasse <> 3", {2, 3, 5, 8, 9, 10}},
        {u"NOT (Klasse = 3)", {2, 3, 5, 8, 9, 10}},
        {u"Klasse IS NULL", {4, 7}},
        {u"NOT Name IS NOT NULL", {7}},
        {u"Klasse = 3 OR NULL", {1, 6}},
        {u"Klasse IS NULL AND (Nr = 7 OR Klasse = 1)", {7}},
        {u"Klasse NOT IN (3, 12)", {2, 3, 5, 8, 9}},
        {u"Klasse IN (3, NULL)", {1, 6}},
        {u"Klasse NOT IN (3, NULL)", {}},
        {u"Klasse BETWEEN 12 AND 3", {1, 6, 9, 10}},
        {u"Klasse NOT BETWEEN 3 AND 12", {2, 3, 5, 8}},
        {u"Nr BETWEEN 11 AND NULL", {}},
        // NOT binds looser than a comparison, AND tighter than OR.
        {u"Name = 'Müller' AND NOT Nr = 2", {1, 3}},
        {u"NOT Nr < 9 AND Nr < 10", {9}},
        {u"Nr = 1 OR Nr = 2 AND Nr = 3", {1}},
        {u"(Nr = 1 OR Nr = 2) AND Nr = 2", {2}},
        // LIKE compares unit by unit; trailing blanks count.
        {u"Name LIKE 'm_ller'", {1, 2}},
        {u"Name LIKE 'M%LER%'", {1, 2, 3, 4}},
        {u"Name LIKE 'strasse'", {5}},
        {u"Name NOT LIKE '%e%'", {9}},
        {u"Name LIKE '[k-n]%' AND Name LIKE '_[!üu]%'", {10}},
        {u"Name LIKE '%''%'", {8}},
        {u"Name LIKE ''", {9}},
        {u"Notiz LIKE '100[%][_][[]x%'", {6}},
        {u"Nr LIKE '1%'", {1, 10}},
        {u"Notiz LIKE Name", {}},
    };
    for (const auto& [condition, ids] : cases)
        EXPECT_THAT(idsWhere(condition), ElementsAreArray(ids)) << base::toUtf8(condition);
}

TEST(Conditions, TreatADoubleAsEqualToItsShortestLiteral) {
    std::mt19937 random(7);
    for (int i = 0; i < 2000; ++i) {
        const double stored = std::ldexp(static_cast<double>(random()) + 1, static_cast<int>(random() % 100) - 90);
        const base::Text written = *test::literalOf(Value(stored));
        const auto typed = Lexer(written).next().value;
        EXPECT_TRUE(std::is_eq(Number::compare(*Number::from(typed), *Number::from(stored)))) << base::toUtf8(written);
    }
}

TEST(Conditions, MatchAPatternFullOfWildcardsInBoundedTime) {
    const auto begin = std::chrono::steady_clock::now();
    base::Text pattern;
    for (int i = 0; i < 1000; ++i)
        pattern += u"%a";
    const base::Text text(20000, u'a');
    EXPECT_TRUE(idsWhere(u"'" + text + u"' LIKE '" + pattern + u"b'").empty());
    EXPECT_EQ(idsWhere(u"'" + text + u"' LIKE '" + pattern + u"' AND Nr = 1"), Ids{1});
    const base::Text brackets(1'000'000, u'[');
    EXPECT_TRUE(LikePattern(brackets, {}).matches(brackets));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));
}

}  // namespace
}  // namespace jet::sql
