#include <algorithm>
#include <chrono>
#include <csignal>
#include <fstream>
#include <iostream>
#include <map>
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

constexpr int kWriters = 4;
/// Two accounts far apart that every writer sets to the same, in one statement.
constexpr base::TextView kPair = u"BenKTO_ID IN (1, 300)";

class SharedUse : public Command {
protected:
    SharedUse() {
        std::cout << "TOLV_RANDOM_SEED=" << seed_ << std::endl;
        EXPECT_EQ(call({u"create", file_, u"--accounts", u"300"}).exitCode, kExitSuccess);
        exec(u"UPDATE Benutzerkonto SET BenKTO_Pass = 'gleich' WHERE " + Text(kPair));
    }

    static bool isBusy(const Outcome& outcome) {
        return std::ranges::any_of(std::initializer_list<const char*>{"gesperrt", "bereits benutzt", "hinterlassen"},
                                   [&](const char* word) { return outcome.errors.find(word) != std::string::npos; });
    }

    static Outcome call(std::vector<Text> arguments) {
        arguments.insert(arguments.end(), {u"--password", u"HwendorpliqZ"});
        return Command::call(arguments);
    }
    Outcome exec(const Text& statement) const { return call({u"exec", file_, statement}); }
    Outcome query(const Text& condition) const { return query(file_, condition); }
    static Outcome query(const Text& file, const Text& condition) {
        return call(
            {u"query", file, u"SELECT BenKTO_ID, BenKTO_Name, BenKTO_Pass FROM Benutzerkonto WHERE " + condition});
    }

    /// What is printed for the rows: number, name, password.
    static std::vector<std::vector<std::string>> rowsOf(const Outcome& outcome) {
        std::istringstream lines(outcome.printed);
        std::vector<std::vector<std::string>> rows;
        std::string line;
        std::getline(lines, line);
        while (std::getline(lines, line)) {
            std::istringstream cells(line);
            rows.emplace_back();
            for (std::string cell; std::getline(cells, cell, '\t');)
                rows.back().push_back(cell);
        }
        return rows;
    }

    std::filesystem::path noteOf(int writer) const { return folder_ / ("writer" + std::to_string(writer)); }
    bool isOver() const { return std::filesystem::exists(folder_ / "over"); }

    /// Adds accounts and changes its own one, and the pair; notes what was acknowledged. Goes on where it was killed.
    int write(int writer, int life) const {
        std::ofstream acknowledged(noteOf(writer), std::ios::app);
        const Text name = u"W" + base::decimal(writer) + u"-" + base::decimal(life) + u"-";
        for (int round = 0; round == 0 || !isOver(); ++round) {
            const Text value = name + base::decimal(round);
            const Text statements[] = {u"INSERT INTO Benutzerkonto (BenKTO_Name) VALUES ('" + value + u"')",
                                       u"UPDATE Benutzerkonto SET BenKTO_Pass = '" + value + u"' WHERE BenKTO_ID = " +
                                           base::decimal(10 + writer),
                                       u"UPDATE Benutzerkonto SET BenKTO_Pass = '" + value + u"' WHERE " + Text(kPair)};
            for (std::size_t kind = 0; kind < std::size(statements); ++kind) {
                Outcome outcome = exec(statements[kind]);
                while (isBusy(outcome))
                    outcome = exec(statements[kind]);
                if (outcome.exitCode != kExitSuccess) return complain(outcome);
                acknowledged << kind << ' ' << base::toUtf8(value) << std::endl;
            }
        }
        return 0;
    }

    /// @param copy  a backup to be made and read each time; empty for the file itself
    int read(const Text& copy) const {
        int reads = 0;
        while (!isOver() || reads == 0) {
            if (!copy.empty()) {
                std::filesystem::remove(copy);
                const Outcome backup = call({u"backup", file_, copy});
                if (isBusy(backup)) continue;
                if (backup.exitCode != kExitSuccess) return complain(backup);
            }
            const Outcome outcome = query(copy.empty() ? file_ : copy, Text(kPair));
            if (isBusy(outcome)) continue;
            const auto rows = rowsOf(outcome);
            if (rows.size() != 2 || rows[0][2] != rows[1][2]) return complain(outcome);
            ++reads;
        }
        return 0;
    }

    static int complain(const Outcome& outcome) {
        std::cerr << outcome.exitCode << ": " << outcome.printed << outcome.errors << std::endl;
        return 1;
    }

    std::uint32_t seed_ = test::environmentNumber("TOLV_RANDOM_SEED", std::random_device{}());
    Text file_ = path(u"Konten.mdb");
};

TEST_F(SharedUse, LosesNothingWhileProcessesAreKilledAtAnyMoment) {
    const std::uint32_t seconds = test::environmentNumber("TOLV_SECONDS", 6);
    std::mt19937 random(seed_);
    std::vector<pid_t> writers, readers;
    std::vector<int> lives(kWriters, 1);
    for (const Text& copy : {Text(), path(u"Kopie.mdb")})
        readers.push_back(start([this, copy] { return read(copy); }));
    for (int i = 0; i < kWriters; ++i)
        writers.push_back(start([this, i] { return write(i, 0); }));
    int killed = 0;
    for (const auto end = Clock::now() + std::chrono::seconds(seconds); Clock::now() < end; ++killed) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20 + random() % 200));
        const int victim = static_cast<int>(random() % kWriters);
        pid_t& writer = writers.at(static_cast<std::size_t>(victim));
        ::kill(writer, SIGKILL);
        const int status = statusOf(writer);
        ASSERT_TRUE(WIFSIGNALED(status)) << "ended by itself with " << WEXITSTATUS(status);
        const int life = lives.at(static_cast<std::size_t>(victim))++;
        writer = start([this, victim, life] { return write(victim, life); });
    }
    std::ofstream(folder_ / "over").put('x');
    writers.insert(writers.end(), readers.begin(), readers.end());
    for (const pid_t process : writers)
        EXPECT_EQ(statusOf(process), 0);

    // A statement rolls back what the last one killed may have left.
    EXPECT_EQ(exec(u"DELETE FROM Benutzerkonto WHERE BenKTO_ID = 0").printed, "0\n");
    const Outcome checked = call({u"check", file_});
    EXPECT_EQ(checked.exitCode, kExitSuccess) << checked.printed << checked.errors;
    std::map<std::string, int> added;
    std::set<std::string> numbers;
    const auto rows = rowsOf(query(u"BenKTO_ID > 300"));
    for (const auto& row : rows) {
        numbers.insert(row[0]);
        ++added[row[1]];
    }
    EXPECT_EQ(numbers.size(), rows.size()) << "a number was given twice";
    EXPECT_EQ(added.size(), rows.size()) << "a row was added twice";
    std::size_t acknowledged = 0;
    for (int writer = 0; writer < kWriters; ++writer) {
        std::ifstream notes(noteOf(writer));
        std::string last;
        int kind = 0;
        for (std::string value; notes >> kind >> value;) {
            if (kind == 0) {
                EXPECT_EQ(added[value], 1) << value << " is lost";
                ++acknowledged;
            }
            if (kind == 1) last = value;
        }
        // The last life of each writer goes once through all statements.
        const auto own = rowsOf(query(u"BenKTO_ID = " + base::decimal(10 + writer)));
        ASSERT_EQ(own.size(), 1U);
        EXPECT_EQ(own[0][2], last);
    }
    EXPECT_GE(acknowledged, std::size_t{kWriters});
    EXPECT_LE(rows.size(), acknowledged + static_cast<std::size_t>(killed));
    std::cout << acknowledged << " rows acknowledged, " << rows.size() << " there, " << killed << " processes killed\n";
}

}  // namespace
}  // namespace kontodb
