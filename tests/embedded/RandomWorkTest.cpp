#include <gtest/gtest.h>
#include <iostream>
#include <iterator>
#include <map>
#include <random>
#include <string>

#include "ado/embedded/Factory.h"
#include "jet/index/IndexKey.h"
#include "jet/page/UsageMap.h"
#include "jet/table/Catalog.h"
#include "tests/fuzz/Seeds.h"
#include "tests/support/Environment.h"
#include "tests/support/FaultyStorage.h"
#include "tests/support/RandomValues.h"
#include "tests/support/SampleFile.h"
#include "tests/support/SoundFile.h"

namespace ado::embedded {
namespace {

using base::Text;
using base::Value;

using Row = std::vector<Value>;  ///< by the position of the column in the definition
using Rows = std::map<std::int32_t, Row>;
using Changes = std::map<std::size_t, Value>;
using Numbers = std::vector<std::int32_t>;

/// A table with an auto number, and the rows that it must have.
class RandomWork {
public:
    RandomWork(const base::Bytes& file, Text table, test::Writers writers, std::uint32_t seed)
        : machine_(file), writers_(writers), random_(seed), name_(std::move(table)) {
        connect();
        withTable([&](const jet::Table& opened) {
            definition_ = opened.definition();
            properties_ = opened.properties();
        });
        const auto& columns = definition_.columns;
        key_ = static_cast<std::size_t>(std::ranges::find_if(columns, &jet::Column::isAutoNumber) - columns.begin());
        expected_ = stored();
        auto rows = open();
        rows->AddNew();
        defaults_ = rowAt(*rows);
        lastNumber_ = numberOf(defaults_);
    }

    void step() {
        switch (expected_.empty() ? 0 : values_.below(13)) {
            case 0:
            case 1:
                return add();
            case 2:
            case 3:
                return insert();
            case 4:
                return static_cast<void>(beginRow());
            case 5:
            case 6:
                return change();
            case 7:
                return update(0);
            case 8:
                return update(values_.below(25));
            case 9:
                return order();
            case 10:
            case 11:
                return search();
            default:
                const std::int32_t first = someRow()->first;
                return remove(first, first + static_cast<std::int32_t>(values_.below(4) == 0 ? values_.below(30) : 0));
        }
    }

    void checkAll() {
        EXPECT_EQ(stored(), expected_);
        EXPECT_EQ(test::faultsIn(machine_.file(), jet::kSeedPassword, writers_), "");
    }

    /// Deletes all rows, in several steps. In the end no page of a row or of a long value may remain.
    void clear() {
        while (!expected_.empty()) {
            for (int i = 0; i < 4 && !expected_.empty(); ++i) {
                const std::int32_t first = someRow()->first;
                remove(first, first + static_cast<std::int32_t>(expected_.size() / 8));
            }
            checkAll();
        }
        withTable([](const jet::Table& table) {
            EXPECT_TRUE(table.ownedPages().empty());
            for (const jet::LongValueMaps& maps : table.definition().longValueMaps)
                EXPECT_TRUE(jet::UsageMap::read(table.source(), maps.owned).empty());
        });
    }

    int refused = 0, done = 0, restarts = 0;

private:
    void connect() {
        connection_ = factory_.createConnection();
        connection_->setProvider(u"Microsoft.Jet.OLEDB.4.0");
        connection_->Properties().Item(u"Jet OLEDB:Database Password").setValue(Text(jet::kSeedPassword));
        connection_->Open(u"", u"", u"", -1);
    }

    void withTable(const auto& use) {
        auto database = jet::Database::open(machine_.storage(), jet::kSeedPassword, jet::LeftJournalRule::RollBack);
        auto operation = database.beginRead();
        use(*jet::openTable(operation, name_));
    }

    std::unique_ptr<ado::Recordset> open(const Text& rest = {}) {
        auto rows = factory_.createRecordset();
        rows->Open(u"SELECT * FROM [" + name_ + u"] " + rest, *connection_, CursorType::adOpenStatic,
                   LockType::adLockPessimistic, -1);
        return rows;
    }

    const jet::Column& column(std::size_t place) const { return definition_.columns[place]; }
    Text nameOf(std::size_t place) const { return u"[" + column(place).name + u"]"; }

    Row rowAt(ado::Recordset& rows) const {
        Row row;
        for (const jet::Column& each : definition_.columns)
            row.push_back(rows.Fields().Item(each.name).Value());
        return row;
    }
    std::int32_t numberOf(const Row& row) const { return std::get<std::int32_t>(row[key_]); }

    Rows stored() {
        Rows all;
        for (auto rows = open(); !rows->isEOF(); rows->MoveNext()) {
            Row row = rowAt(*rows);
            all[numberOf(row)] = std::move(row);
        }
        return all;
    }

    Numbers numbers(const Text& rest) {
        Numbers found;
        for (auto rows = open(rest); !rows->isEOF(); rows->MoveNext())
            found.push_back(std::get<std::int32_t>(rows->Fields().Item(column(key_).name).Value()));
        return found;
    }

    std::size_t somePlace() { return values_.below(definition_.columns.size()); }

    /// @param inStatement  true: the value must have a literal, so it is neither bytes nor a negative zero
    Value someValue(std::size_t place, bool inStatement) {
        while (true) {
            Value value = values_.value(column(place));
            if (!inStatement) return value;
            if (auto* real = std::get_if<double>(&value)) *real += 0.0;
            if (auto* real = std::get_if<float>(&value)) *real += 0.0F;
            if (auto* date = std::get_if<base::Date>(&value)) date->days += 0.0;
            if (test::literalOf(value)) return value;
        }
    }

    Changes someChanges(bool inStatement) {
        Changes changes;
        while (changes.empty()) {
            for (std::size_t place = 0; place < definition_.columns.size(); ++place)
                if (place != key_ && values_.below(3) != 0) changes[place] = someValue(place, inStatement);
        }
        return changes;
    }

    static Row with(Row row, const Changes& changes) {
        for (const auto& [place, value] : changes)
            row[place] = value;
        return row;
    }

    /// Whether the table's rules accept the row, which is or will be one of `rows`.
    bool isPermitted(const Row& row, const Rows& rows) const {
        for (std::size_t place = 0; place < row.size(); ++place)
            if (base::isNull(row[place]) && properties_.isRequired(column(place).name)) return false;
        return std::ranges::all_of(definition_.indexes, [&](const jet::IndexDefinition& index) {
            if (!keyIsCertain(row, index)) return false;
            const auto key = keyOf(row, index);
            if (!key) return !index.isRequired() && !index.isPrimary;
            if (!index.isUnique() && !index.isPrimary) return true;
            return std::ranges::none_of(rows, [&](const auto& other) {
                return other.first != numberOf(row) && keyOf(other.second, index) == key;
            });
        });
    }

    std::size_t placeOf(const jet::Column& column) const {
        return static_cast<std::size_t>(&column - definition_.columns.data());
    }

    /// Texts whose keys would be too long are refused.
    bool keyIsCertain(const Row& row, const jet::IndexDefinition& index) const {
        return std::ranges::all_of(index.columns, [&](const jet::IndexColumn& part) {
            const auto& column = definition_.columnOf(part);
            const auto* text = std::get_if<Text>(&row[placeOf(column)]);
            return text == nullptr || jet::sortKeyIsCertain(*text, column.textOrder);
        });
    }

    /// @return nothing if a part of the key is null
    std::optional<base::Bytes> keyOf(const Row& row, const jet::IndexDefinition& index) const {
        base::Bytes key;
        for (const jet::IndexColumn& part : index.columns) {
            const std::size_t place = placeOf(definition_.columnOf(part));
            if (base::isNull(row[place])) return std::nullopt;
            jet::appendKeyPart(key, column(place), row[place], part.ascending);
        }
        return key;
    }

    /// Runs `work`. If the rules permit it, `after` becomes the expected state. Sometimes the device fails once, or the
    /// machine stops, in the middle of the work.
    /// @return whether the work has been done without a restart
    bool attempt(const Rows& after, const Numbers& changed, const auto& work) {
        bool permitted =
            std::ranges::all_of(changed, [&](std::int32_t number) { return isPermitted(after.at(number), after); });
        ++(permitted ? done : refused);
        std::uint32_t fault = permitted ? values_.below(8) : 2;
        const int step = machine_.steps() + 1 + static_cast<int>(values_.below(14));
        if (fault == 0) machine_.failAt(step);
        if (fault == 1) machine_.stopAt(step);
        bool isDone = true;
        try {
            work();
            EXPECT_TRUE(permitted);
        } catch (const base::RuntimeError& error) {
            isDone = false;
            if (error.description().find(u"in Beziehung stehende") != Text::npos) {  // of a relationship
                permitted = false;
                fault = 2;
                machine_.goOn();
            }
            EXPECT_TRUE(!permitted || (fault < 2 && machine_.steps() >= step)) << error.what();
        }
        if (fault == 0) {
            EXPECT_EQ(machine_.afterStop(test::Loss::All, 0).file(), machine_.file());
            machine_.goOn();
            EXPECT_EQ(stored(), isDone ? after : expected_);
            if (!isDone) work();
        }
        if (fault == 1) isDone = restart(after, isDone);
        isDone = permitted && (isDone || fault == 0);
        if (isDone) expected_ = after;
        return isDone && fault != 1;
    }

    /// Restarts the machine. The disk must have either the state from before the work or the state after it.
    /// @return whether the work has been done
    bool restart(const Rows& after, bool isAcknowledged) {
        constexpr test::Loss kLosses[] = {test::Loss::Nothing, test::Loss::All, test::Loss::Some};
        ++restarts;
        machine_ = machine_.afterStop(kLosses[values_.below(3)], values_.below(1000));
        connect();
        const Rows now = stored();
        EXPECT_TRUE(now == after || (now == expected_ && !isAcknowledged));
        EXPECT_FALSE(machine_.journal().has_value());
        if (now == after && !after.empty()) lastNumber_ = std::max(lastNumber_, after.rbegin()->first);
        return now == after;
    }

    /// A GUID may also be written as a text.
    Text literal(const Value& value) {
        Text form = *test::literalOf(value);
        if (!std::holds_alternative<base::Guid>(value) || values_.below(2) == 0) return form;
        return u"'" + form.substr(form.rfind(u'{'), form.size() - form.rfind(u'{') - 1) + u"'";
    }

    Rows::iterator someRow() {
        return std::next(expected_.begin(), static_cast<std::ptrdiff_t>(values_.below(expected_.size())));
    }
    Text isNumber(std::int32_t number) const { return u"WHERE " + nameOf(key_) + u" = " + base::decimal(number); }

    /// Begins a new row. Its number is used up, even if the row is not added.
    std::unique_ptr<ado::Recordset> beginRow() {
        auto rows = open(isNumber(0));
        rows->AddNew();
        EXPECT_EQ(numberOf(rowAt(*rows)), ++lastNumber_);
        return rows;
    }

    void assign(ado::Recordset& rows, const Changes& changes) {
        for (const auto& [place, value] : changes)
            rows.Fields().Item(column(place).name).setValue(value);
        rows.Update();
    }

    void add() {
        const auto rows = beginRow();
        const Changes changes = someChanges(false);
        Rows after = expected_;
        after[lastNumber_] = with(defaults_, changes);
        after[lastNumber_][key_] = lastNumber_;
        attempt(after, {lastNumber_}, [&] { assign(*rows, changes); });
    }

    void insert() {
        const Changes changes = someChanges(true);
        Text names, literals;
        for (const auto& [place, value] : changes) {
            names += (names.empty() ? u"" : u", ") + nameOf(place);
            literals += (literals.empty() ? u"" : u", ") + literal(value);
        }
        const std::int32_t number = lastNumber_ + 1;
        Rows after = expected_;
        after[number] = with(defaults_, changes);
        after[number][key_] = number;
        attempt(after, {number}, [&] {
            connection_->Execute(u"INSERT INTO [" + name_ + u"] (" + names + u") VALUES (" + literals + u")");
            lastNumber_ = number;
        });
    }

    /// Changes a row once or twice through one record set, which must show its own changes. Another must not.
    void change() {
        const std::int32_t number = someRow()->first;
        const auto rows = open(isNumber(number)), snapshot = open(isNumber(number));
        const Row before = expected_.at(number);
        bool isDone = true;
        for (int times = 0; times < 2 && isDone; ++times) {
            const Changes changes = someChanges(false);
            Rows after = expected_;
            after[number] = with(after[number], changes);
            isDone = attempt(after, {number}, [&] { assign(*rows, changes); });
            EXPECT_TRUE(!isDone || rowAt(*rows) == expected_.at(number));
        }
        EXPECT_EQ(rowAt(*snapshot), before);
    }

    /// @param further  how many of the following numbers are changed, too
    void update(std::uint32_t further) {
        const std::int32_t first = someRow()->first;
        const std::int32_t last = first + static_cast<std::int32_t>(further);
        const Changes changes = someChanges(true);
        Text assignments;
        for (const auto& [place, value] : changes)
            assignments += (assignments.empty() ? u"" : u", ") + nameOf(place) + u" = " + literal(value);
        Rows after = expected_;
        Numbers changed;
        for (auto row = after.find(first); row != after.end() && row->first <= last; ++row) {
            row->second = with(row->second, changes);
            changed.push_back(row->first);
        }
        attempt(after, changed, [&] {
            connection_->Execute(u"UPDATE [" + name_ + u"] SET " + assignments + u" WHERE " + nameOf(key_) +
                                 u" BETWEEN " + base::decimal(first) + u" AND " + base::decimal(last));
        });
    }

    /// @param last  the last of the numbers that are deleted
    void remove(std::int32_t first, std::int32_t last) {
        Rows after = expected_;
        after.erase(after.lower_bound(first), after.upper_bound(last));
        attempt(after, {}, [&] {
            connection_->Execute(u"DELETE FROM [" + name_ + u"] WHERE " + nameOf(key_) + u" >= " +
                                 base::decimal(first) + u" AND " + nameOf(key_) + u" <= " + base::decimal(last));
        });
    }

    /// An index must find the same rows as a scan of the table.
    void search() {
        const std::size_t place = somePlace();
        const auto chosen = someRow();
        const bool isThere = values_.below(4) != 0;
        const Value value = isThere ? chosen->second[place] : someValue(place, true);
        if (!test::literalOf(value)) return;
        const Text wanted = literal(value);
        const Numbers found = numbers(u"WHERE " + nameOf(place) + u" = " + wanted);
        EXPECT_EQ(found, numbers(u"WHERE NOT " + nameOf(place) + u" <> " + wanted)) << base::toUtf8(wanted);
        if (!isThere || base::isNull(value)) return;
        EXPECT_NE(std::ranges::find(found, chosen->first), found.end())
            << base::toUtf8(nameOf(place) + u" = " + wanted);
    }

    void order() {
        const std::size_t place = somePlace();
        if (column(place).type == jet::ColumnType::Ole) return;
        const bool descends = values_.below(2) == 0;
        const Text by = u" ORDER BY " + nameOf(place) + (descends ? u" DESC" : u"");
        const Numbers found = numbers(by);
        EXPECT_EQ(found.size(), expected_.size());
        EXPECT_EQ(found, numbers(u"WHERE " + nameOf(key_) + u" > 0" + by)) << base::toUtf8(by);
        for (std::size_t i = 1; i < found.size(); ++i) {
            const Value& before = expected_.at(found[i - 1])[place];
            const Value& after = expected_.at(found[i])[place];
            ASSERT_FALSE(descends ? test::isLess(before, after) : test::isLess(after, before)) << base::toUtf8(by);
        }
    }

    test::Machine machine_;
    test::Writers writers_;
    std::mt19937 random_;
    test::RandomValues values_{random_};
    Factory factory_{[this](const Text&) { return machine_.storage(); }};
    std::unique_ptr<ado::Connection> connection_;
    Text name_;
    jet::TableDefinition definition_;
    jet::PropertyBlob properties_;
    std::size_t key_ = 0;  ///< position of the auto number column
    Rows expected_;
    Row defaults_;
    std::int32_t lastNumber_ = 0;
};

std::vector<jet::Seed> files() {
    std::vector<jet::Seed> all;
    for (jet::Seed& seed : jet::seeds()) {
        if (seed.name.ends_with(".mdb") && !seed.name.starts_with("BenKTO")) continue;
        all.push_back(seed);
        if (jet::Header::read(base::ByteView(seed.file)).databaseKey == 0 && seed.name != "empty")
            all.push_back({seed.name + ", encoded", test::encoded(seed.file, 0xA1B2C3D4U), seed.table});
    }
    return all;
}

/// TOLV_OPERATIONS gives longer runs, TOLV_RANDOM_SEED repeats a run.
TEST(RandomWork, GivesTheExpectedRowsInASoundFile) {
    constexpr std::uint32_t kBatch = 100;
    const std::uint32_t operations = test::environmentNumber("TOLV_OPERATIONS", 250);
    std::uint32_t seed = test::environmentNumber("TOLV_RANDOM_SEED", std::random_device{}());
    std::cout << "TOLV_RANDOM_SEED=" << seed << "\n";
    for (const jet::Seed& each : files()) {
        SCOPED_TRACE(each.name);
        const bool isOurs = each.name.find(".mdb") == std::string::npos;
        RandomWork work(each.file, each.table, isOurs ? test::Writers::OnlyWe : test::Writers::Others, seed++);
        for (std::uint32_t i = 1; i <= operations; ++i) {
            SCOPED_TRACE(i);
            ASSERT_NO_THROW(work.step());
            if (i % kBatch == 0 || i == operations) work.checkAll();
            ASSERT_FALSE(testing::Test::HasFailure());
        }
        if (isOurs) work.clear();
        std::cout << each.name << ": " << work.done << " done, " << work.refused << " refused, " << work.restarts
                  << " restarts\n";
    }
}

}  // namespace
}  // namespace ado::embedded
