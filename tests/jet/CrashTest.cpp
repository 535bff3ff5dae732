#include <functional>
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

/// The changes that a transaction makes to the pages of the file.
struct Pattern {
    const char* name;
    std::function<void(Transaction&)> change;
};

void scribble(std::span<std::uint8_t> page, std::uint8_t mark, std::size_t from = 0, std::size_t count = kPageSize) {
    for (std::size_t i = from; i < from + count; ++i)
        page[i] = static_cast<std::uint8_t>(page[i] + mark + i % 7);
}

const std::vector<Pattern>& patterns() {
    static const std::vector<Pattern> kPatterns = {
        {"growth alone", [](Transaction& transaction) { scribble(transaction.change(transaction.append()), 9); }},
        {"the header, pages and growth",
         [](Transaction& transaction) {
             scribble(transaction.change(0), 1, 0xE00, 2);
             scribble(transaction.change(1), 5, 500, 1500);
             scribble(transaction.change(7), 5);
             for (int i = 0; i < 3; ++i)
                 scribble(transaction.change(transaction.append()), 77, 0, 3000);
         }},
    };
    return kPatterns;
}

base::Bytes sampleBytes(std::uint32_t databaseKey) {
    return databaseKey == 0 ? test::sampleFile({}) : test::encoded(test::sampleFile({}), databaseKey);
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

/// Each pattern on a plain and an encoded file, with the bytes of the file before and after.
void forEachPattern(const std::function<void(const Pattern&, const base::Bytes& old, const base::Bytes& fresh)>& step) {
    for (const std::uint32_t key : {0U, 0xA1B2C3D4U}) {
        for (const Pattern& pattern : patterns()) {
            SCOPED_TRACE(std::string(pattern.name) + (key != 0 ? ", encoded" : ""));
            const base::Bytes old = sampleBytes(key);
            const base::Bytes fresh = fileAfter(old, pattern);
            ASSERT_NE(old, fresh);
            step(pattern, old, fresh);
        }
    }
}

/// The bytes of the file if the machine is switched off now.
base::Bytes onDisk(const Machine& machine) {
    return machine.afterStop(Loss::All, 0).file();
}

/// How many times the random choice of what reaches the disk is repeated.
int tries(Loss loss) {
    return loss == Loss::Some ? 25 : 1;
}

/// Stops the commit at every step, and passes on the machine as it starts again.
/// @param step  gets the machine, and whether the commit had returned without an error
void forEachStop(const Pattern& pattern, const base::Bytes& old,
                 const std::function<void(const Machine&, bool isAcknowledged)>& step) {
    bool isPast = false;
    for (int stop = 1; !isPast; ++stop) {
        Machine machine(old);
        machine.stopAt(stop);
        const bool isAcknowledged = commitOn(machine, pattern);
        isPast = machine.steps() < stop;
        for (const Loss loss : {Loss::Nothing, Loss::LastSector, Loss::All, Loss::Some}) {
            for (int seed = 0; seed < tries(loss) && !testing::Test::HasFailure(); ++seed) {
                SCOPED_TRACE("stopped at step " + std::to_string(stop) + ", loss " +
                             std::to_string(static_cast<int>(loss)) + ", seed " + std::to_string(seed));
                step(machine.afterStop(loss, static_cast<unsigned>(stop * 1000 + seed)), isAcknowledged);
            }
        }
    }
}

TEST(CrashSweep, EveryCutLeavesTheOldFileOrTheNewOne) {
    int refusals = 0;
    forEachPattern([&](const Pattern& pattern, const base::Bytes& old, const base::Bytes& fresh) {
        forEachStop(pattern, old, [&](const Machine& machine, bool isAcknowledged) {
            // A program that may only read sees a whole file or an error.
            try {
                Database::open(machine.storage(), {}, LeftJournalRule::Refuse);
                EXPECT_TRUE(machine.file() == old || machine.file() == fresh);
            } catch (const base::RuntimeError& error) {
                EXPECT_NE(std::string(error.what()).find("unterbrochen"), std::string::npos) << error.what();
                ++refusals;
            }
            Database::open(machine.storage(), {}, LeftJournalRule::RollBack);
            WriteAccess::rollBack(*machine.storage());
            EXPECT_TRUE(machine.file() == fresh || (machine.file() == old && !isAcknowledged));
            EXPECT_FALSE(machine.journal().has_value() || machine.hasNewJournal());
        });
    });
    EXPECT_GT(refusals, 0);
}

/// Damages one sector: bits are flipped in eight places, the sector is zeroed, or the file is cut off there.
std::vector<base::Bytes> damagesAt(const base::Bytes& journal, std::size_t sector, std::size_t place) {
    const auto begin = static_cast<std::ptrdiff_t>(sector * kSectorBytes);
    std::vector<base::Bytes> all(9, journal);
    for (std::size_t i = 0; i < 8; ++i)
        all[i][sector * kSectorBytes + (place * 11 + i * 64) % kSectorBytes] ^= 0x10U;
    std::fill_n(all[8].begin() + begin, kSectorBytes, std::uint8_t{0});
    all.emplace_back(journal.begin(), journal.begin() + begin);
    return all;
}

TEST(CrashSweep, NoDamagedJournalIsAppliedOrDropped) {
    int refusals = 0;
    forEachPattern([&](const Pattern& pattern, const base::Bytes& old, const base::Bytes&) {
        bool isPast = false;
        for (int stop = 1; !isPast; ++stop) {
            Machine stopped(old);
            stopped.stopAt(stop);
            commitOn(stopped, pattern);
            isPast = stopped.steps() < stop;
            const base::Bytes journal = stopped.journal().value_or(base::Bytes());
            for (std::size_t sector = 0; sector < journal.size() / kSectorBytes; ++sector) {
                for (const base::Bytes& damaged : damagesAt(journal, sector, static_cast<std::size_t>(stop))) {
                    if (damaged == journal) continue;
                    const Machine machine(stopped.file(), damaged);
                    EXPECT_NE(errorOf([&] { WriteAccess::rollBack(*machine.storage()); }).find("ist beschädigt"),
                              std::string::npos)
                        << "stopped at step " << stop << ", sector " << sector;
                    EXPECT_TRUE(machine.file() == stopped.file() && machine.journal() == damaged);
                    ++refusals;
                }
            }
        }
    });
    EXPECT_GT(refusals, 0);
}

TEST(CrashSweep, AnInterruptedRollbackCanBeRepeated) {
    const Pattern& pattern = patterns().back();
    const base::Bytes old = sampleBytes(0);
    const base::Bytes fresh = fileAfter(old, pattern);
    forEachStop(pattern, old, [&](const Machine& stopped, bool) {
        if (!stopped.journal()) return;
        bool isPast = false;
        for (int stop = 1; !isPast; ++stop) {
            Machine machine(stopped.file(), stopped.journal());
            machine.stopAt(stop);
            try {
                WriteAccess::rollBack(*machine.storage());
            } catch (const base::RuntimeError&) {
                EXPECT_GE(machine.steps(), stop) << "refused";
            }
            isPast = machine.steps() < stop;
            for (unsigned seed = 0; seed < 4; ++seed) {
                const Machine again = machine.afterStop(seed == 0 ? Loss::Nothing : Loss::Some, seed);
                WriteAccess::rollBack(*again.storage());
                ASSERT_TRUE(again.file() == old || again.file() == fresh) << "rollback stopped at step " << stop;
            }
            machine = Machine(stopped.file(), stopped.journal());
            machine.failAt(stop);
            errorOf([&] { WriteAccess::rollBack(*machine.storage()); });
            machine.goOn();
            WriteAccess::rollBack(*machine.storage());
            ASSERT_TRUE(machine.file() == old || machine.file() == fresh) << "rollback failed at step " << stop;
            ASSERT_EQ(onDisk(machine), machine.file()) << "rollback failed at step " << stop;
        }
    });
}

/// A step fails, and the program ends. The next program may find bytes in memory that are not on the disk.
TEST(FailingMachine, TheNextOpenerFlushesWhatItSees) {
    forEachPattern([](const Pattern& pattern, const base::Bytes& old, const base::Bytes& fresh) {
        bool isPast = false;
        for (int step = 1; !isPast; ++step) {
            SCOPED_TRACE("step " + std::to_string(step));
            Machine machine(old);
            machine.failAt(step);
            machine.stopAt(step + 1);
            commitOn(machine, pattern);
            isPast = machine.steps() < step;
            machine.goOn();
            WriteAccess::rollBack(*machine.storage());
            EXPECT_TRUE(machine.file() == old || machine.file() == fresh);
            EXPECT_TRUE(onDisk(machine) == machine.file());
            EXPECT_FALSE(machine.journal().has_value() || machine.hasNewJournal());
        }
    });
}

}  // namespace
}  // namespace jet
