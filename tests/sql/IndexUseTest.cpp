#include <algorithm>
#include <gmock/gmock.h>
#include <random>

#include "base/RuntimeError.h"
#include "jet/sql/QueryExecutor.h"
#include "jet/table/Catalog.h"
#include "jet/tree/IndexCursor.h"
#include "jet/tree/IndexNode.h"
#include "tests/jet/PagesInMemory.h"
#include "tests/support/FaultyStorage.h"
#include "tests/support/MemoryPageStore.h"
#include "tests/support/RandomValues.h"
#include "tests/support/RelatedTables.h"
#include "tests/support/SampleFile.h"

namespace jet::sql {
namespace {

using base::Value;
using testing::HasSubstr;

/// Two tables with the same rows: "Mit" has indexes, "Ohne" has none.
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

    static test::Rows rowsOf(const base::Text& statement, const base::Bytes& bytes = file()) {
        Database database = test::openSample(bytes);
        ReadOperation operation = database.beginRead();
        const ResultSet found = executeQuery(operation, statement);
        test::Rows rows(found.rowCount());
        for (std::size_t row = 0; row < rows.size(); ++row)
            for (std::size_t column = 0; column < found.columnCount(); ++column)
                rows[row].push_back(found.value(row, column));
        return rows;
    }

    static std::size_t pagesFor(const base::Text& statement) {
        const test::Machine machine(file());
        Database database = Database::open(machine.storage(), {});
        const std::size_t before = machine.pagesRead();
        ReadOperation operation = database.beginRead();
        executeQuery(operation, statement);
        return machine.pagesRead() - before;
    }
};

TEST_F(IndexUse, ReadsFewPagesForFewRows) {
    ASSERT_GT(pagesFor(u"SELECT * FROM Ohne WHERE Nr = 2000"), 100U);
    for (const base::TextView statement :
         {u"SELECT * FROM Mit WHERE Nr = 2000", u"SELECT * FROM Mit WHERE Nr = 2001",
          u"SELECT * FROM Mit WHERE Nr = 2000 AND Name = 'x'", u"SELECT TOP 3 Name FROM Mit",
          u"SELECT TOP 0 * FROM Mit ORDER BY Breit", u"SELECT COUNT(*) FROM Mit WHERE Nr = 2000"})
        EXPECT_LE(pagesFor(base::Text(statement)), 20U) << base::toUtf8(statement);
}

TEST_F(IndexUse, GivesTheSameRowsInTheSameOrderWithAndWithoutIndexes) {
    constexpr base::TextView kNames[] = {u"Nr", u"Name", u"Klasse", u"Breit"};
    std::mt19937 random(20261125);
    const auto below = [&](std::size_t limit) { return random() % limit; };
    constexpr base::TextView kConditions[] = {{},
                                              {},
                                              {},
                                              u" WHERE Klasse >= 10",
                                              u" WHERE Klasse > 40",
                                              u" WHERE Nr = 2000",
                                              u" WHERE Nr = 2001",
                                              u" WHERE Nr = 1e4",
                                              u" WHERE Name = 'MÜLLER'",
                                              u" WHERE Name = 'strasse' AND NOT Nr = 5 AND Klasse > 7",
                                              u" WHERE Name = ''",
                                              u" WHERE Name = 'Aegir' OR Nr = 2",
                                              u" WHERE Name IS NULL",
                                              u" WHERE 7 = Klasse AND Name = 'muller'",
                                              u" WHERE Klasse = 7",
                                              u" WHERE Klasse = 70000",
                                              u" WHERE Klasse = NULL"};
    for (std::size_t i = 0; i < 5 * std::size(kConditions); ++i) {
        const base::Text where(kConditions[i % std::size(kConditions)]);
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
                const Value &left = descending ? b[column] : a[column], &right = descending ? a[column] : b[column];
                if (test::isLess(left, right) || test::isLess(right, left)) return test::isLess(left, right);
            }
            return false;
        };
        std::ranges::stable_sort(rows, isBefore);
        base::Text top;
        if (below(3) != 0) {
            std::size_t kept = below(2) == 0 ? below(10) : below(4500);
            top = u"TOP " + base::decimal(kept) + u" ";
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

TEST_F(IndexUse, ReportsADamagedIndexAndNeverOmitsOrRepeatsRows) {
    const auto errorIn = [](const base::Bytes& bytes, const base::Text& statement) {
        return errorOf([&] { rowsOf(statement, bytes); });
    };
    test::MemoryPageStore sound(file());
    const TableDefinition table = openTable(sound, u"Mit")->definition();
    IndexCursor cursor(sound, table.page, table.indexes[0].rootPage);
    cursor.first();
    const RowPointer first = cursor.row();
    cursor.next();
    const RowPointer second = cursor.row();
    const auto pointing = [&](RowPointer target) {
        test::MemoryPageStore store(file());
        IndexNode leaf(IndexPage(store.page(cursor.leafPage()), table.page));
        base::Bytes entry(leaf.entry(1).begin(), leaf.entry(1).end() - kIndexRowBytes);
        for (const PageNumber byte : {target.page >> 16U, target.page >> 8U, target.page, PageNumber{target.slot}})
            entry.push_back(static_cast<std::uint8_t>(byte));
        leaf.replaceEntry(1, entry);
        leaf.write(store.change(cursor.leafPage()), table.page, 0);
        return store.file();
    };
    const base::Text byNumber = u"SELECT * FROM Mit ORDER BY Nr";
    EXPECT_EQ(errorIn(pointing(second), byNumber), "no error");
    EXPECT_THAT(errorIn(pointing(first), byNumber), HasSubstr("enthält eine Zeile zweimal"));
    EXPECT_THAT(errorIn(pointing({second.page, 250}), byNumber), HasSubstr("eine Zeile, die es nicht gibt"));
    EXPECT_THAT(errorIn(pointing(first), u"SELECT * FROM Mit WHERE Nr = -997"), HasSubstr("passt nicht"));

    // The index that ignores nulls, without the flag that says so.
    test::editDefinition(sound, u"Mit",
                         [](TableDefinition& definition) { definition.indexes[2].flags = IndexDefinition::kAlways; });
    EXPECT_THAT(errorIn(sound.file(), u"SELECT * FROM Mit ORDER BY Klasse"), HasSubstr("Im Index fehlen Zeilen"));
}

}  // namespace
}  // namespace jet::sql
