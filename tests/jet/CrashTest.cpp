#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <vector>

#include "jet/transaction/Transaction.h"
#include "tests/jet/PagesInMemory.h"
#include "tests/support/FaultyStorage.h"
#include "tests/support/SampleFile.h"

namespace jet {
namespace {

using test::Loss;
using test::Machine;

/// The changes that a transaction makes to the pages of the file.
struct Pattern {
    const char* name;
    std::function<void(Transaction&)> change;
    std::uint32_t databaseKey = 0;  ///< of an encoded file

    base::Bytes oldFile() const {
        const base::Bytes file = test::sampleFile({});
        return databaseKey == 0 ? file : test::encoded(file, databaseKey);
    }
};

void scribble(std::span<std::uint8_t> page, std::uint8_t mark, std::size_t from = 0, std::size_t count = kPageSize) {
    for (std::size_t i = from; i < from + count; ++i)
        page[i] = static_cast<std::uint8_t>(page[i] + mark + i % 7);
}

void grow(Transaction& transaction) {
    scribble(transaction.change(transaction.append()), 9);
}

void changeAll(Transaction& transaction) {
    scribble(transaction.change(0), 1, 0xE00, 2);
    scribble(transaction.change(1), 5, 500, 1500);
    scribble(transaction.change(7), 5);
    for (int i = 0; i < 3; ++i)
        scribble(transaction.change(transaction.append()), 77, 0, 3000);
}

const std::vector<Pattern>& patterns() {
    static const std::vector<Pattern> kPatterns = {
        {"growth alone", grow},
        {"growth alone, encoded", grow, 0xA1B2C3D4U},
        {"the header, pages and growth", changeAll},
        {"the header, pages and growth, encoded", changeAll, 0xA1B2C3D4U},
    };
    return kPatterns;
}

/// @return whether the commit returned without an error
bool commitOn(const Machine& machine, const Pattern& pattern) {
    Database database = Database::open(machine.storage(), {}, LeftJournalRule::RollBack);
    Transaction transaction(database);
    pattern.change(transaction);
    try {
        transaction.commit();
    } catch (const base::RuntimeError&) {
        EXPECT_EQ(transaction.state(), Transaction::State::Failed);
        return false;
    }
    EXPECT_EQ(transaction.state(), Transaction::State::Committed);
    return true;
}

base::Bytes fileAfter(const base::Bytes& old, const Pattern& pattern) {
    const Machine machine(old);
    EXPECT_TRUE(commitOn(machine, pattern));
    return machine.file();
}

/// Each pattern, with the bytes of the file before and after.
void forEachPattern(const std::function<void(const Pattern&, const base::Bytes& old, const base::Bytes& fresh)>& step) {
    for (const Pattern& pattern : patterns()) {
        SCOPED_TRACE(pattern.name);
        const base::Bytes old = pattern.oldFile();
        const base::Bytes fresh = fileAfter(old, pattern);
        ASSERT_NE(old, fresh);
        step(pattern, old, fresh);
    }
}

/// The bytes of the file if the machine is switched off now.
base::Bytes onDisk(const Machine& machine) {
    return machine.afterStop(Loss::All, 0).file();
}

/// Runs `work` with a new machine and the step, from 1, at which to stop or fail, until `work` has fewer steps.
void forEachStep(const base::Bytes& file, const std::optional<base::Bytes>& journal,
                 const std::function<void(Machine&, int step)>& work) {
    bool isPast = false;
    for (int step = 1; !isPast && !testing::Test::HasFailure(); ++step) {
        SCOPED_TRACE("step " + std::to_string(step));
        Machine machine(file, journal);
        work(machine, step);
        isPast = machine.steps() < step;
    }
}

/// Stops the commit at every step, and runs `work` on the restarted machine.
/// @param work  gets the machine, and whether the commit had returned without an error
void forEachStop(const Pattern& pattern, const base::Bytes& old,
                 const std::function<void(const Machine&, bool isAcknowledged)>& work) {
    constexpr unsigned kTries = 25;
    forEachStep(old, std::nullopt, [&](Machine& machine, int step) {
        machine.stopAt(step);
        const bool isAcknowledged = commitOn(machine, pattern);
        work(machine.afterStop(Loss::Nothing, 0), isAcknowledged);
        work(machine.afterStop(Loss::All, 0), isAcknowledged);
        for (unsigned seed = 0; seed < kTries; ++seed) {
            SCOPED_TRACE("seed " + std::to_string(seed));
            work(machine.afterStop(Loss::Some, static_cast<unsigned>(step) * 1000 + seed), isAcknowledged);
        }
    });
}

/// A program that may only read sees a whole file or an error. One that ignores journals always sees the file.
TEST(CrashSweep, EveryStopLeavesTheOldFileOrTheNewOne) {
    int refusals = 0;
    forEachPattern([&](const Pattern& pattern, const base::Bytes& old, const base::Bytes& fresh) {
        forEachStop(pattern, old, [&](const Machine& machine, bool isAcknowledged) {
            Database reporting = Database::open(machine.storage(), {}, LeftJournalRule::Ignore);
            EXPECT_EQ(reporting.beginRead().leftJournal().has_value(), machine.journal().has_value());
            const std::string error = errorOf([&] { Database::open(machine.storage(), {}, LeftJournalRule::Refuse); });
            EXPECT_EQ(error.find("'Konten.mdb-journal' hinterlassen.") != std::string::npos,
                      machine.journal().has_value())
                << error;
            EXPECT_TRUE(machine.journal() || machine.file() == old || machine.file() == fresh);
            refusals += machine.journal() ? 1 : 0;
            Database::open(machine.storage(), {}, LeftJournalRule::RollBack);
            WriteAccess::rollBack(*machine.storage());
            EXPECT_TRUE(machine.file() == fresh || (machine.file() == old && !isAcknowledged));
            EXPECT_FALSE(machine.journal().has_value() || machine.hasNewJournal());
        });
    });
    EXPECT_GT(refusals, 0);
}

TEST(CrashSweep, AnInterruptedRollbackCanBeRepeated) {
    const Pattern& pattern = patterns()[2];
    const base::Bytes old = pattern.oldFile();
    const base::Bytes fresh = fileAfter(old, pattern);
    forEachStop(pattern, old, [&](const Machine& stopped, bool) {
        if (!stopped.journal()) return;
        forEachStep(stopped.file(), stopped.journal(), [&](Machine& machine, int step) {
            machine.stopAt(step);
            const std::string error = errorOf([&] { WriteAccess::rollBack(*machine.storage()); });
            EXPECT_TRUE(error == "no error" || machine.steps() >= step) << error;
            for (unsigned seed = 0; seed < 4; ++seed) {
                const Machine again = machine.afterStop(seed == 0 ? Loss::Nothing : Loss::Some, seed);
                WriteAccess::rollBack(*again.storage());
                EXPECT_TRUE(again.file() == old || again.file() == fresh);
            }
        });
        forEachStep(stopped.file(), stopped.journal(), [&](Machine& machine, int step) {
            machine.failAt(step);
            errorOf([&] { WriteAccess::rollBack(*machine.storage()); });
            machine.goOn();
            WriteAccess::rollBack(*machine.storage());
            EXPECT_TRUE(machine.file() == old || machine.file() == fresh);
            EXPECT_EQ(onDisk(machine), machine.file());
        });
    });
}

/// A step fails, and the program ends. The next program may read bytes from the system's cache that are not on the
/// disk.
TEST(FailingMachine, TheNextProgramFlushesWhatItReads) {
    forEachPattern([](const Pattern& pattern, const base::Bytes& old, const base::Bytes& fresh) {
        forEachStep(old, std::nullopt, [&](Machine& machine, int step) {
            machine.failAt(step);
            machine.stopAt(step + 1);
            commitOn(machine, pattern);
            machine.goOn();
            WriteAccess::rollBack(*machine.storage());
            EXPECT_TRUE(machine.file() == old || machine.file() == fresh);
            EXPECT_TRUE(onDisk(machine) == machine.file());
            EXPECT_FALSE(machine.journal().has_value() || machine.hasNewJournal());
        });
    });
}

/// What a commit leaves that stops in the middle of the second page: the journal is whole, the file half written.
class LeftJournal : public testing::Test {
protected:
    LeftJournal() {
        const Pattern pattern{"two pages and growth", [](Transaction& transaction) {
                                  for (const PageNumber page : {kFirst, kSecond, transaction.append()})
                                      scribble(transaction.change(page), 1);
                              }};
        new_ = fileAfter(old_, pattern);
        Machine machine(old_);
        machine.stopAt(kMiddleOfSecondPage);
        EXPECT_FALSE(commitOn(machine, pattern));
        file_ = machine.file();
        journal_ = machine.journal().value();
        EXPECT_TRUE(file_ != old_ && file_ != new_ && file_.size() == new_.size());
    }

    /// @param change  what another program has done to the file
    base::Bytes changed(const std::function<void(base::Bytes&)>& change) const {
        base::Bytes bytes = file_;
        change(bytes);
        return bytes;
    }

    static void expectRefused(const base::Bytes& file, const base::Bytes& journal, const std::string& why,
                              const base::Text& name = u"Konten.mdb") {
        const Machine machine(file, journal);
        const std::string error = errorOf([&] { WriteAccess::rollBack(*machine.storage(name)); });
        const std::string named = "'" + base::toUtf8(name);
        EXPECT_NE(error.find("Die Datei " + named + "' wird nicht geöffnet: Das Journal " + named + "-journal' " + why),
                  std::string::npos)
            << error;
        EXPECT_TRUE(machine.file() == file && machine.journal() == journal);
    }

    static constexpr PageNumber kFirst = 3, kSecond = 8;
    // Steps: create, write, flush and rename the journal, flush its name; append, write the first and second page.
    static constexpr int kMiddleOfSecondPage = 8;
    base::Bytes old_ = test::sampleFile({}), new_, file_, journal_;
};

TEST_F(LeftJournal, RestoresTheOldFileWhateverWasWrittenAfterItsEnd) {
    const Machine machine(changed([&](base::Bytes& file) { file[old_.size() + 300] ^= 0x40U; }), journal_);
    WriteAccess::rollBack(*machine.storage());
    EXPECT_EQ(machine.file(), old_);
}

TEST_F(LeftJournal, IsNeverAppliedToAFileThatAnotherProgramHasWritten) {
    std::vector<base::Bytes> files = {
        changed([](base::Bytes& file) { file[0xE02] ^= 1U; }),  // a commit word
        changed([](base::Bytes& file) { file.resize(file.size() + kPageSize); }),
        changed([&](base::Bytes& file) { file.resize(old_.size() - kPageSize); }),
    };
    for (const PageNumber page : {kFirst, kSecond})
        for (std::size_t sector = 0; sector < kSectorsPerPage; ++sector)
            files.push_back(
                changed([&](base::Bytes& file) { file[page * kPageSize + sector * kSectorBytes + 300] ^= 0x40U; }));
    for (const base::Bytes& file : files)
        expectRefused(file, journal_, "passt nicht mehr zu ihr");
}

TEST_F(LeftJournal, OfAnotherFileIsNeverApplied) {
    expectRefused(file_, journal_, "gehört zu einer anderen", u"Andere.mdb");
    expectRefused(changed([](base::Bytes& file) { file[0x76] ^= 1U; }), journal_, "gehört zu einer anderen");
    expectRefused(old_, {'H', 'a', 'l', 'l', 'o'}, "ist beschädigt");
    expectRefused(old_, base::Bytes(5000, 0xA5), "ist beschädigt");
}

/// In each sector one of 24 bits is flipped, or the sector is zeroed, or the journal is cut off there.
TEST_F(LeftJournal, IsNeitherAppliedNorDeletedIfItIsDamaged) {
    for (std::size_t begin = 0; begin < journal_.size(); begin += kSectorBytes) {
        std::vector<base::Bytes> damaged(26, journal_);
        for (std::size_t i = 0; i < 24; ++i)
            damaged[i][begin + (i * 73) % kSectorBytes] ^= static_cast<std::uint8_t>(1U << i % 8);
        std::fill_n(damaged[24].begin() + static_cast<std::ptrdiff_t>(begin), kSectorBytes, std::uint8_t{0});
        damaged[25].resize(begin);
        for (const base::Bytes& journal : damaged)
            for (const base::Bytes& file : {old_, file_, new_})
                if (journal != journal_) expectRefused(file, journal, "ist beschädigt");
    }
}

}  // namespace
}  // namespace jet
