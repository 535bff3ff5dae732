#include <algorithm>
#include <array>
#include <gmock/gmock.h>
#include <random>

#include "base/RuntimeError.h"
#include "jet/sql/QueryExecutor.h"
#include "jet/table/Catalog.h"
#include "jet/tree/IndexCursor.h"
#include "tests/support/FaultyStorage.h"
#include "tests/support/SampleFile.h"

namespace jet::sql {
namespace {

using base::Value;
using testing::HasSubstr;

struct Answer {
    std::vector<Value> ids;
    std::size_t pagesRead = 0;
};

Answer answer(const base::Bytes& file, const base::Text& statement) {
    const test::Machine machine(file);
    Database database = Database::open(machine.storage(), {});
    const std::size_t pagesBefore = machine.pagesRead();
    ReadOperation operation = database.beginRead();
    const ResultSet rows = executeQuery(operation, statement);
    Answer result;
    for (std::size_t row = 0; row < rows.rowCount(); ++row)
        result.ids.push_back(rows.value(row, 0));
    result.pagesRead = machine.pagesRead() - pagesBefore;
    return result;
}

/// Many rows with few names; the same once with indexes ("Mit") and once without ("Ohne").
class IndexUse : public testing::Test {
protected:
    static constexpr std::int32_t kRows = 4000;

    static test::SampleTable tableNamed(base::TextView name) {
        test::SampleTable table;
        table.design.name = name;
        table.design.columns = {{u"Nr", ColumnType::Long},
                                {u"Name", ColumnType::Text, 80},
                                {u"Klasse", ColumnType::Integer},
                                {u"Breit", ColumnType::Text, 250}};
        std::mt19937 random(20040605);
        const std::vector<base::Text> names = {u"Müller", u"MÜLLER",  u"müller ",    u"Muller",
                                               u"Straße", u"Strasse", u"Karl-Heinz", u"KarlHeinz",
                                               u"",       u" ",       u"Ægir",       u"aegir"};
        std::vector<std::int32_t> numbers(kRows);
        for (std::int32_t i = 0; i < kRows; ++i)
            numbers[static_cast<std::size_t>(i)] = i * 3 - 1000;
        std::shuffle(numbers.begin(), numbers.end(), random);
        for (const std::int32_t number : numbers) {
            const auto pick = random() % (names.size() + 1);
            const Value klasse =
                random() % 4 == 0 ? Value(base::Null{}) : Value(static_cast<std::int16_t>(random() % 50));
            table.rows.push_back({number, pick < names.size() ? Value(names[pick]) : Value(base::Null{}), klasse,
                                  Value(base::Text(200, u'x'))});
        }
        return table;
    }

    static const base::Bytes& file() {
        static const base::Bytes bytes = [] {
            test::SampleTable with = tableNamed(u"Mit");
            with.design.indexes = {
                {u"PrimaryKey", {{u"Nr"}}, true, IndexDefinition::kUnique | IndexDefinition::kRequired},
                {u"Name", {{u"Name"}}, false, 0},
                {u"Klasse", {{u"Klasse"}}, false, IndexDefinition::kIgnoreNulls},
                {u"Zwei", {{u"Klasse", false}, {u"Name"}}, false, 0}};
            return test::sampleFile({with, tableNamed(u"Ohne")});
        }();
        return bytes;
    }

    static test::Rows rowsOf(const base::Text& statement) {
        Database database = test::openSample(file());
        ReadOperation operation = database.beginRead();
        const ResultSet found = executeQuery(operation, statement);
        test::Rows rows(found.rowCount());
        for (std::size_t row = 0; row < rows.size(); ++row)
            for (std::size_t column = 0; column < found.columnCount(); ++column)
                rows[row].push_back(found.value(row, column));
        return rows;
    }

    static std::size_t pagesOfScan() { return answer(file(), u"SELECT * FROM Ohne").pagesRead; }
};

TEST_F(IndexUse, GivesWhatScanAndSortGive) {
    for (const base::TextView rest :
         {u"WHERE Nr = 2000", u"WHERE Nr = 2001", u"WHERE Nr = 1e4", u"WHERE Name = 'MÜLLER'",
          u"WHERE Name = 'strasse' AND NOT Nr = 5 AND Klasse > 7", u"WHERE Name = ''",
          u"WHERE Name = 'Aegir' OR Nr = 2", u"WHERE Name IS NULL", u"WHERE Klasse = 7 ORDER BY Name",
          u"WHERE 7 = Klasse AND Name = 'muller'", u"WHERE Klasse = 70000", u"WHERE Klasse = NULL", u"ORDER BY Name",
          u"ORDER BY Name DESC", u"ORDER BY Klasse", u"ORDER BY Klasse DESC", u"ORDER BY Klasse DESC, Name, Nr DESC",
          u"ORDER BY Nr", u"WHERE Klasse > 40 ORDER BY Name"}) {
        const Answer with = answer(file(), u"SELECT * FROM Mit " + base::Text(rest));
        const Answer without = answer(file(), u"SELECT * FROM Ohne " + base::Text(rest));
        EXPECT_EQ(with.ids, without.ids) << base::toUtf8(rest);
        EXPECT_GE(without.pagesRead, pagesOfScan()) << base::toUtf8(rest);
    }
}

TEST_F(IndexUse, ReadsFewPagesForOneRow) {
    ASSERT_GT(pagesOfScan(), 100U);
    for (const base::TextView condition : {u"Nr = 2000", u"Nr = 2001", u"Nr = 2000 AND Name = 'x'"})
        EXPECT_LE(answer(file(), u"SELECT * FROM Mit WHERE " + base::Text(condition)).pagesRead, 20U)
            << base::toUtf8(condition);
}

/// Null before all values; -1, 0 or 1.
int compare(const Value& a, const Value& b) {
    const auto sign = [](auto order) { return std::is_lt(order) ? -1 : std::is_gt(order) ? 1 : 0; };
    if (base::isNull(a) || base::isNull(b)) return sign(!base::isNull(a) <=> !base::isNull(b));
    if (const auto* text = std::get_if<base::Text>(&a)) return sign(compareTexts(*text, std::get<base::Text>(b)));
    if (const auto* number = std::get_if<std::int32_t>(&a)) return sign(*number <=> std::get<std::int32_t>(b));
    return sign(std::get<std::int16_t>(a) <=> std::get<std::int16_t>(b));
}

TEST_F(IndexUse, GivesColumnsOrderAndTopAsTheTestSortsThem) {
    constexpr base::TextView kNames[] = {u"Nr", u"Name", u"Klasse", u"Breit"};
    std::mt19937 random(20261125);
    const auto below = [&](std::size_t limit) { return random() % limit; };
    for (int i = 0; i < 60; ++i) {
        const base::Text where =
            below(2) == 0 ? u"" : u" WHERE Klasse >= " + base::decimal(static_cast<int>(below(50)));
        test::Rows rows = rowsOf(u"SELECT * FROM Ohne" + where);
        base::Text columns, order;
        std::vector<std::size_t> shown;
        for (std::size_t count = 1 + below(4); shown.size() < count;) {
            shown.push_back(below(3));
            columns += (columns.empty() ? u"" : u", ") + (u"[" + base::Text(kNames[shown.back()]) + u"]");
        }
        std::vector<std::pair<std::size_t, bool>> by;
        for (std::size_t count = below(4); by.size() < count;) {
            by.emplace_back(below(4), below(2) == 0);
            order += (order.empty() ? u" ORDER BY " : u", ") + base::Text(kNames[by.back().first]) +
                     (by.back().second ? u" DESC" : u"");
        }
        const auto isBefore = [&](const auto& a, const auto& b) {
            for (const auto& [column, descending] : by) {
                const int found = compare(a[column], b[column]);
                if (found != 0) return (found < 0) != descending;
            }
            return false;
        };
        std::ranges::stable_sort(rows, isBefore);
        base::Text top;
        if (below(3) != 0) {
            std::size_t kept = below(2) == 0 ? below(10) : below(4500);
            top = u"TOP " + base::decimal(static_cast<int>(kept)) + u" ";
            while (!by.empty() && kept > 0 && kept < rows.size() && !isBefore(rows[kept - 1], rows[kept]))
                ++kept;
            rows.resize(std::min(kept, rows.size()));
        }
        test::Rows expected;
        for (const auto& row : rows) {
            auto& wanted = expected.emplace_back();
            for (const std::size_t column : shown)
                wanted.push_back(row[column]);
        }
        for (const base::TextView table : {u" FROM Ohne", u" FROM Mit"}) {
            base::Text statement = u"SELECT ";
            statement.append(top).append(columns).append(table).append(where).append(order);
            EXPECT_TRUE(rowsOf(statement) == expected) << base::toUtf8(statement);
        }
        const auto counted = rowsOf(u"SELECT COUNT(*) FROM Mit" + where);
        EXPECT_EQ(std::get<std::int32_t>(counted.at(0).at(0)),
                  static_cast<std::int32_t>(rowsOf(u"SELECT Nr FROM Ohne" + where).size()));
    }
}

TEST_F(IndexUse, StopsReadingAfterTheTop) {
    EXPECT_LE(answer(file(), u"SELECT TOP 3 Name FROM Mit").pagesRead, 20U);
    EXPECT_LE(answer(file(), u"SELECT TOP 0 * FROM Mit ORDER BY Breit").pagesRead, 20U);
    EXPECT_LE(answer(file(), u"SELECT COUNT(*) FROM Mit WHERE Nr = 2000").pagesRead, 20U);
}

TEST_F(IndexUse, MeetsADamagedIndexWithAnErrorAndNeverMissingOrDoubleRows) {
    const auto errorOf = [](const base::Bytes& bytes, const base::Text& statement) -> std::string {
        try {
            answer(bytes, statement);
        } catch (const base::RuntimeError& error) {
            return error.what();
        }
        return {};
    };
    Database database = test::openSample(file());
    ReadOperation operation = database.beginRead();
    const auto table = openTable(operation, u"Mit");
    IndexCursor cursor(operation, table->definition().page, table->definition().indexes[0].rootPage);
    cursor.first();
    const RowPointer first = cursor.row();
    cursor.next();
    const RowPointer second = cursor.row();
    const auto pointing = [&](RowPointer target) {
        base::Bytes bytes = file();
        const auto stored = [](RowPointer row) {
            return std::array<std::uint8_t, 3>{static_cast<std::uint8_t>(row.page >> 8U),
                                               static_cast<std::uint8_t>(row.page), row.slot};
        };
        const auto leaf = bytes.begin() + static_cast<std::ptrdiff_t>(cursor.leafPage() * kPageSize);
        const auto wanted = stored(second);
        const auto replacement = stored(target);
        const auto found = std::search(leaf + kIndexEntriesOffset, leaf + kPageSize, wanted.begin(), wanted.end());
        std::copy(replacement.begin(), replacement.end(), found);
        return bytes;
    };
    const base::Text byNumber = u"SELECT * FROM Mit ORDER BY Nr";
    EXPECT_EQ(errorOf(pointing(second), byNumber), "");
    EXPECT_THAT(errorOf(pointing(first), byNumber), HasSubstr("enthält eine Zeile zweimal"));
    EXPECT_THAT(errorOf(pointing({second.page, 250}), byNumber), HasSubstr("eine Zeile, die es nicht gibt"));
    EXPECT_THAT(errorOf(pointing(first), u"SELECT * FROM Mit WHERE Nr = -997"), HasSubstr("passt nicht"));

    // The index that ignores nulls, with the sign taken off that says so.
    base::Bytes bytes = file();
    const auto& block = table->definition().indexes[2].block;
    const auto place = std::search(bytes.begin(), bytes.end(), block.begin(), block.end());
    ASSERT_NE(place, bytes.end());
    *(place + 46) = IndexDefinition::kAlways;
    EXPECT_THAT(errorOf(bytes, u"SELECT * FROM Mit ORDER BY Klasse"), HasSubstr("Im Index fehlen Zeilen"));
}

}  // namespace
}  // namespace jet::sql
