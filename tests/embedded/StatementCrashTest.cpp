#include <functional>
#include <gtest/gtest.h>
#include <iostream>
#include <string>
#include <vector>

#include "ado/embedded/Factory.h"
#include "jet/transaction/WriteAccess.h"
#include "tests/support/Environment.h"
#include "tests/support/FaultyStorage.h"
#include "tests/support/MemoryPageStore.h"
#include "tests/support/RelatedTables.h"
#include "tests/support/SampleFile.h"
#include "tests/support/SoundFile.h"

namespace ado::embedded {
namespace {

using base::Text;
using base::Value;
using test::Loss;
using test::Machine;

constexpr std::int32_t kAccounts = 120;

/// Accounts with long names, whose index has several leaves, and with memos of every kind. Sessions, too: they are
/// deleted together with their account.
base::Bytes accountFile() {
    using jet::ColumnType;
    constexpr std::uint8_t kKey = jet::IndexDefinition::kUnique | jet::IndexDefinition::kRequired;
    test::SampleTable accounts, sessions;
    accounts.design.name = u"Konto";
    accounts.design.columns = {{u"Nr", ColumnType::Long},
                               {u"Name", ColumnType::Text, 100},
                               {u"Notiz", ColumnType::Memo},
                               {u"Recht", ColumnType::Boolean}};
    accounts.design.columns[0].isAutoNumber = true;
    accounts.design.indexes = {{u"PrimaryKey", {{u"Nr"}}, true, kKey},
                               {u"Name", {{u"Name"}}, false, jet::IndexDefinition::kUnique}};
    sessions.design.name = u"Sitzung";
    sessions.design.columns = {{u"Nr", ColumnType::Long}, {u"Konto", ColumnType::Long}, {u"Text", ColumnType::Memo}};
    sessions.design.indexes = {{u"PrimaryKey", {{u"Nr"}}, true, kKey}, {u"Konto", {{u"Konto"}}}};
    constexpr std::size_t kNoteUnits[] = {20, 300, 10'000, 0};
    for (std::int32_t i = 1; i <= kAccounts; ++i) {
        const auto units = i < 9 ? kNoteUnits[static_cast<std::size_t>(i) % 4] : 0;
        accounts.rows.push_back({i, u"Niederlassung Nummer " + base::decimal(i * 7919 % 10007) + Text(60, u'x'),
                                 units == 0 ? Value(base::Null{}) : Value(Text(units, u'n')), i % 3 == 0});
        sessions.rows.push_back({i, 1 + i % 10, Text(i % 10 == 3 ? 4000 : 30, u's')});
    }
    test::MemoryPageStore store(test::sampleFile({accounts, sessions}));
    test::relate(store, u"Sitzung", u"Konto", u"Konto", u"Nr", 0, test::kCascade);
    return store.file();
}

/// One or more transactions on an open connection. Tells when each of them has been committed.
struct Work {
    const char* name;
    std::function<void(ado::Connection&, const std::function<void()>& acknowledged)> run;
};

Work statement(const char* name, const Text& text) {
    return {name, [text](ado::Connection& connection, const auto& acknowledged) {
                connection.Execute(text);
                acknowledged();
            }};
}

std::unique_ptr<ado::Recordset> account(ado::Connection& connection, std::int32_t number) {
    auto rows = Factory().createRecordset();
    rows->Open(u"SELECT * FROM Konto WHERE Nr = " + base::decimal(number), connection, CursorType::adOpenStatic,
               LockType::adLockPessimistic, -1);
    return rows;
}

const std::vector<Work>& works() {
    static const std::vector<Work> kWorks = {
        {"AddNew and Update",
         [](ado::Connection& connection, const auto& acknowledged) {
             const auto rows = account(connection, 0);
             rows->AddNew();
             acknowledged();
             rows->Fields().Item(u"Name").setValue(Text(u"Neues Konto"));
             rows->Fields().Item(u"Notiz").setValue(Text(5000, u'z'));
             rows->Update();
             acknowledged();
         }},
        {"Update of a row that is there",
         [](ado::Connection& connection, const auto& acknowledged) {
             const auto rows = account(connection, 5);
             rows->Fields().Item(u"Name").setValue(Text(u"Anderer Name"));
             rows->Fields().Item(u"Recht").setValue(true);
             rows->Update();
             acknowledged();
         }},
        statement("INSERT", u"INSERT INTO Konto (Name, Recht) VALUES ('Neues Konto', TRUE)"),
        statement("INSERT of a long value",
                  u"INSERT INTO Konto (Name, Notiz) VALUES ('Neues Konto', '" + Text(20'000, u'z') + u"')"),
        statement("UPDATE of one row", u"UPDATE Konto SET Name = 'Anderer Name' WHERE Nr = 77"),
        statement("UPDATE of many rows", u"UPDATE Konto SET Recht = TRUE, Notiz = NULL WHERE Nr < 60"),
        statement("UPDATE that makes rows and file grow",
                  u"UPDATE Konto SET Notiz = '" + Text(1000, u'w') + u"' WHERE Nr BETWEEN 30 AND 70"),
        statement("UPDATE with a long value", u"UPDATE Konto SET Notiz = '" + Text(9000, u'z') + u"' WHERE Nr = 2"),
        statement("DELETE of a row that nothing hangs on", u"DELETE FROM Konto WHERE Nr = 90"),
        statement("DELETE that deletes sessions along", u"DELETE FROM Konto WHERE Nr IN (2, 4)"),
        statement("DELETE of most rows", u"DELETE FROM Konto WHERE Nr > 5"),
    };
    return kWorks;
}

/// Does the work on this machine.
/// @return how many of its transactions were committed before the machine failed
std::size_t workOn(
    const Machine& machine, const Work& work, const std::function<void()>& acknowledged = [] {}) {
    std::size_t count = 0;
    Factory factory([&](const Text&) { return machine.storage(); });
    const auto connection = factory.createConnection();
    connection->setProvider(u"Microsoft.Jet.OLEDB.4.0");
    connection->Open(u"", u"", u"", -1);
    try {
        work.run(*connection, [&] {
            ++count;
            acknowledged();
        });
    } catch (const base::RuntimeError&) {
        EXPECT_GT(machine.steps(), 0) << "refused";
    }
    return count;
}

/// Each work, alternately on a plain and an encoded file.
/// @param step  gets the file before the work and after each of its transactions, all of them sound
void forEachWork(const std::function<void(const Work&, const std::vector<base::Bytes>& states)>& step) {
    const base::Bytes plain = accountFile();
    const base::Bytes encoded = test::encoded(plain, 0xA1B2C3D4U);
    const base::Bytes* file = &encoded;
    for (const Work& work : works()) {
        SCOPED_TRACE(work.name);
        file = file == &plain ? &encoded : &plain;
        std::vector<base::Bytes> states = {*file};
        const Machine machine(*file);
        workOn(machine, work, [&] { states.push_back(machine.file()); });
        ASSERT_GT(states.size(), 1U);
        for (const base::Bytes& state : states)
            ASSERT_EQ(test::faultsIn(state), "");
        ASSERT_NE(states.back(), *file);
        step(work, states);
        if (testing::Test::HasFailure()) return;
    }
}

/// Afterwards the disk has the file from before or after the interrupted transaction, byte for byte, and all
/// transactions that were committed before. With TOLV_CRASH_TRIES the random choice of what reaches the disk is
/// repeated more often.
TEST(StatementCrash, EveryCutLeavesWhatWasBeforeOrAfterItsTransaction) {
    const std::uint32_t tries = test::environmentNumber("TOLV_CRASH_TRIES", 2);
    std::size_t cuts = 0, disks = 0;
    forEachWork([&](const Work& work, const std::vector<base::Bytes>& states) {
        bool isPast = false;
        for (int stop = 1; !isPast; ++stop) {
            Machine machine(states.front());
            machine.stopAt(stop);
            const std::size_t done = workOn(machine, work);
            isPast = machine.steps() < stop;
            ++cuts;
            for (const Loss loss : {Loss::Nothing, Loss::LastSector, Loss::All, Loss::Some}) {
                for (std::uint32_t seed = 0; seed < (loss == Loss::Some ? tries : 1); ++seed) {
                    const Machine again = machine.afterStop(loss, static_cast<unsigned>(stop) * 100'000 + seed);
                    jet::Database::open(again.storage(), {}, jet::LeftJournalRule::RollBack);
                    jet::WriteAccess::rollBack(*again.storage());
                    ASSERT_TRUE(again.file() == states[done] ||
                                (done + 1 < states.size() && again.file() == states[done + 1]))
                        << "stopped at step " << stop << ", loss " << static_cast<int>(loss) << ", seed " << seed;
                    ASSERT_FALSE(again.journal().has_value() || again.hasNewJournal());
                    ++disks;
                }
            }
        }
    });
    std::cout << cuts << " cuts, " << disks << " disks\n";
}

/// A device fails once. Afterwards the same work succeeds on the file.
TEST(StatementCrash, AfterAFailureTheWorkCanBeDoneAgain) {
    forEachWork([](const Work& work, const std::vector<base::Bytes>& states) {
        bool isPast = false;
        for (int step = 1; !isPast; ++step) {
            SCOPED_TRACE("step " + std::to_string(step));
            Machine machine(states.front());
            machine.failAt(step);
            const std::size_t done = workOn(machine, work);
            isPast = machine.steps() < step;
            ASSERT_EQ(machine.file(), states[done]);
            ASSERT_EQ(machine.afterStop(Loss::All, 0).file(), states[done]);
            machine.goOn();
            if (done == 0) {
                ASSERT_EQ(workOn(machine, work), states.size() - 1);
                ASSERT_EQ(machine.file(), states.back());
                ASSERT_FALSE(machine.journal().has_value());
            }
        }
    });
}

}  // namespace
}  // namespace ado::embedded
