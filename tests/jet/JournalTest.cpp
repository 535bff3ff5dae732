#include <gtest/gtest.h>
#include <string>

#include "jet/transaction/Transaction.h"
#include "tests/jet/PagesInMemory.h"
#include "tests/support/FaultyStorage.h"
#include "tests/support/SampleFile.h"

namespace jet {
namespace {

using test::Loss;
using test::Machine;

constexpr PageNumber kFirst = 3;
constexpr PageNumber kSecond = 8;

/// Changes the pages kFirst and kSecond in all their sectors, and appends one page.
void change(const Machine& machine) {
    Database database = Database::open(machine.storage(), {});
    Transaction transaction(database);
    for (const PageNumber number : {kFirst, kSecond, transaction.append()}) {
        for (std::uint8_t& byte : transaction.change(number))
            byte = static_cast<std::uint8_t>(byte + 1);
    }
    transaction.commit();
}

/// A machine stopped in the middle of the second page: the journal is complete, the file half written.
Machine halfWritten(const base::Bytes& old) {
    // Make, write, flush and rename the journal, flush its name; then appended page, first page, second page.
    constexpr int kMiddleOfSecondPage = 8;
    Machine machine(old);
    machine.stopAt(kMiddleOfSecondPage);
    EXPECT_NE(errorOf([&] { change(machine); }), "no error");
    return machine.afterStop(Loss::Nothing, 0);
}

class LeftJournal : public testing::Test {
protected:
    static void expectRefused(const Machine& machine, const std::string& where) {
        const base::Bytes file = machine.file();
        const auto journal = machine.journal();
        const std::string error = errorOf([&] { WriteAccess::rollBack(*machine.storage()); });
        EXPECT_NE(error.find("Die Datei 'Konten.mdb' wird nicht geöffnet: Das Journal 'Konten.mdb-journal' "),
                  std::string::npos)
            << where << ": " << error;
        EXPECT_TRUE(machine.file() == file && machine.journal() == journal) << where;
    }

    base::Bytes old_ = test::sampleFile({});
    Machine half_ = halfWritten(old_);
};

TEST_F(LeftJournal, RestoresTheOldFileWhateverFollowsItsEnd) {
    ASSERT_NE(half_.file(), old_);
    base::Bytes garbage = half_.file();
    ASSERT_GT(garbage.size(), old_.size());
    garbage[old_.size() + 300] ^= 0x40U;
    for (const base::Bytes& file : {half_.file(), garbage}) {
        const Machine machine(file, half_.journal());
        WriteAccess::rollBack(*machine.storage());
        EXPECT_EQ(machine.file(), old_);
        EXPECT_FALSE(machine.journal().has_value());
    }
}

TEST_F(LeftJournal, IsRolledBackRefusedOrReportedAsTheOpenerMay) {
    EXPECT_NE(errorOf([&] { Database::open(half_.storage(), {}); }).find("'Konten.mdb-journal' hinterlassen."),
              std::string::npos);
    {
        Database reporting = Database::open(half_.storage(), {}, LeftJournalRule::Ignore);
        const ReadOperation operation(reporting);
        EXPECT_EQ(operation.leftJournal(), u"Konten.mdb-journal");
        EXPECT_EQ(operation.pageCount(), half_.file().size() / kPageSize);
    }
    Database writing = Database::open(half_.storage(), {}, LeftJournalRule::RollBack);
    EXPECT_EQ(half_.file(), old_);
    EXPECT_EQ(writing.beginRead().leftJournal(), std::nullopt);
}

TEST_F(LeftJournal, IsNeverAppliedToAFileThatSomebodyElseHasWritten) {
    for (const PageNumber page : {kFirst, kSecond}) {
        for (std::size_t sector = 0; sector < kSectorsPerPage; ++sector) {
            base::Bytes file = half_.file();
            file[page * kPageSize + sector * kSectorBytes + 300] ^= 0x40U;
            expectRefused(Machine(file, half_.journal()), "page " + std::to_string(page));
        }
    }
    base::Bytes committed = half_.file();
    committed[0xE02] ^= 1U;
    expectRefused(Machine(committed, half_.journal()), "another commit word");
    base::Bytes longer = half_.file(), shorter = old_;
    longer.resize(longer.size() + kPageSize);
    shorter.resize(shorter.size() - kPageSize);
    expectRefused(Machine(longer, half_.journal()), "longer");
    expectRefused(Machine(shorter, half_.journal()), "shorter");
}

TEST_F(LeftJournal, OfAnotherFileIsNeverApplied) {
    const Machine renamed(half_.file(), half_.journal());
    EXPECT_NE(errorOf([&] { WriteAccess::rollBack(*renamed.storage(u"Andere.mdb")); }).find("gehört zu einer anderen"),
              std::string::npos);
    EXPECT_EQ(renamed.file(), half_.file());
    base::Bytes younger = half_.file();
    younger[0x76] ^= 0x01U;
    expectRefused(Machine(younger, half_.journal()), "created at another time");
    expectRefused(Machine(old_, base::Bytes{'H', 'a', 'l', 'l', 'o'}), "no journal at all");
    expectRefused(Machine(old_, base::Bytes(5000, 0xA5)), "noise");
}

}  // namespace
}  // namespace jet
