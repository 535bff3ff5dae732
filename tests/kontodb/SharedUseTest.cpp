#include <chrono>
#include <csignal>
#include <iostream>
#include <random>
#include <set>
#include <sstream>
#include <thread>

#include "tests/kontodb/ChildProcess.h"
#include "tests/kontodb/Command.h"
#include "tests/support/Environment.h"

/// Several kontodb processes in one file, some of them killed at any moment.
namespace kontodb {
namespace {

using Clock = std::chrono::steady_clock;

class SharedUse : public Command {
protected:
    SharedUse() { expect("\n$ create k.mdb --accounts 300 --password=\nk.mdb: 300 Konten\n"); }

    /// Calls again as long as the file is in use or its journal left. Any other error ends the process.
    static std::string insist(const std::vector<Text>& arguments) {
        while (true) {
            const Outcome outcome = call(arguments);
            if (outcome.exitCode == kExitSuccess) return outcome.printed;
            const auto says = [&](const char* word) { return outcome.errors.find(word) != std::string::npos; };
            if (says("gesperrt") || says("bereits benutzt") || says("hinterlassen")) continue;
            std::cerr << outcome.printed << outcome.errors << std::endl;
            ::_exit(1);
        }
    }
    static std::multiset<std::string> linesOf(const Text& file, const Text& select) {
        std::istringstream lines(insist({u"query", file, select, u"--no-header"}));
        std::multiset<std::string> set;
        for (std::string line; std::getline(lines, line);)
            set.insert(line);
        return set;
    }
    static bool isOver() { return std::filesystem::exists("over"); }

    /// Adds accounts and notes those acknowledged. In between it sets two accounts far apart to the same, at once.
    static int addAccounts(int writer) {
        std::ofstream acknowledged("acknowledged" + std::to_string(writer));
        for (int round = 0; round == 0 || !isOver(); ++round) {
            const Text name = u"W" + base::decimal(writer) + u"-" + base::decimal(round);
            insist({u"exec", u"k.mdb", u"INSERT INTO Benutzerkonto (BenKTO_Name) VALUES ('" + name + u"')"});
            acknowledged << base::toUtf8(name) << std::endl;
            insist({u"exec", u"k.mdb",
                    u"UPDATE Benutzerkonto SET BenKTO_Pass = '" + name + u"' WHERE BenKTO_ID IN (1, 300)"});
        }
        return 0;
    }

    /// @return 0 if the two were always the same, in the file and in a backup of it
    static int readBoth() {
        const Text select = u"SELECT BenKTO_Pass FROM Benutzerkonto WHERE BenKTO_ID IN (1, 300)";
        for (int round = 0; round == 0 || !isOver(); ++round) {
            std::filesystem::remove("copy.mdb");
            insist({u"backup", u"k.mdb", u"copy.mdb"});
            for (const char16_t* file : {u"k.mdb", u"copy.mdb"}) {
                const auto lines = linesOf(file, select);
                if (lines.size() != 2 || *lines.begin() != *lines.rbegin()) return 1;
            }
        }
        return 0;
    }
};

TEST_F(SharedUse, LosesNothingWhileProcessesAreKilledAtAnyMoment) {
    const std::uint32_t seconds = test::environmentNumber("TOLV_SECONDS", 6);
    const std::uint32_t seed = test::environmentNumber("TOLV_RANDOM_SEED", std::random_device{}());
    std::cout << "TOLV_RANDOM_SEED=" << seed << std::endl;
    std::mt19937 random(seed);
    insist({u"exec", u"k.mdb", u"UPDATE Benutzerkonto SET BenKTO_Pass = 'x' WHERE BenKTO_ID IN (1, 300)"});
    int writers = 0, killed = 0;
    const auto startWriter = [&] { return start([writer = writers++] { return addAccounts(writer); }); };
    std::vector<pid_t> processes{start(readBoth), startWriter(), startWriter(), startWriter(), startWriter()};
    for (const auto end = Clock::now() + std::chrono::seconds(seconds); Clock::now() < end; ++killed) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20 + random() % 200));
        pid_t& victim = processes.at(1 + random() % (processes.size() - 1));
        ::kill(victim, SIGKILL);
        const int status = statusOf(victim);
        ASSERT_TRUE(WIFSIGNALED(status)) << "ended by itself with " << WEXITSTATUS(status);
        victim = startWriter();
    }
    write("over", "x");
    for (const pid_t process : processes)
        EXPECT_EQ(statusOf(process), 0);

    // A statement rolls back what the last one killed may have left.
    EXPECT_EQ(insist({u"exec", u"k.mdb", u"DELETE FROM Benutzerkonto WHERE BenKTO_ID = 0"}), "0\n");
    expect("\n$ check k.mdb\nIn Ordnung: …\n");
    const auto added = linesOf(u"k.mdb", u"SELECT BenKTO_Name FROM Benutzerkonto WHERE BenKTO_ID > 300");
    std::size_t acknowledged = 0;
    for (int writer = 0; writer < writers; ++writer) {
        std::ifstream notes("acknowledged" + std::to_string(writer));
        for (std::string name; notes >> name; ++acknowledged)
            EXPECT_EQ(added.count(name), 1U) << name;
    }
    EXPECT_GE(acknowledged, 4U);
    EXPECT_LE(added.size(), acknowledged + static_cast<std::size_t>(killed));
    std::cout << acknowledged << " rows acknowledged, " << added.size() << " there, " << killed
              << " processes killed\n";
}

}  // namespace
}  // namespace kontodb
