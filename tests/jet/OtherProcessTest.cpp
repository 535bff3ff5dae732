#include <chrono>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <future>
#include <gmock/gmock.h>
#include <iostream>
#include <map>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "tests/jet/Counter.h"
#include "tests/support/TempFolder.h"

/// Several processes that use one file, some of which die at any moment: further runs of this program, each in a role.
namespace jet {
namespace {

namespace fs = std::filesystem;
namespace counter = test::counter;

constexpr const char* kFile = "Konten.mdb";  // in the working folder
constexpr const char* kOver = "vorbei";      // a file that tells the readers to end

Database openFile(LeftJournalRule rule) {
    return Database::open(fileStorage(fs::absolute(kFile).u16string()), {}, rule);
}

/// Whether a busy file explains the failure: the wait was too long, or a program died and left a journal.
bool isBusy(const base::RuntimeError& error) {
    const auto says = [&error](base::TextView words) { return error.description().find(words) != base::Text::npos; };
    return says(u"gesperrt") || says(u"bereits benutzt") || says(u"unterbrochen");
}

/// Repeats the step as long as the file is busy.
void insist(const std::function<void()>& step) {
    while (true) {
        try {
            return step();
        } catch (const base::RuntimeError& error) {
            if (!isBusy(error)) throw;
        }
    }
}

/// Adds 1 `rounds` times. Counts only commits that returned without an error.
void count(int rounds) {
    for (int round = 0; round < rounds; ++round) {
        insist([] {
            Database database = openFile(LeftJournalRule::RollBack);
            counter::add(database);
        });
    }
}

/// Reads until everything is over. The number must be whole and never decrease.
void readOn(LeftJournalRule rule) {
    std::uint32_t last = 0;
    bool isOver = false;
    while (!isOver) {
        isOver = fs::exists(kOver);
        insist([&] {
            Database database = openFile(rule);
            const std::uint32_t now = counter::read(database);
            if (now < last) throw std::runtime_error("the number has gone back");
            last = now;
        });
    }
}

/// Counts, and dies after so many milliseconds, whatever it is doing.
[[noreturn]] void die(int milliseconds) {
    std::thread([milliseconds] {
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
        std::_Exit(EXIT_SUCCESS);
    }).detach();
    while (true)
        count(1);
}

int play(const std::string& role, int number) {
    const std::map<std::string, std::function<void(int)>> roles = {
        {"count", count},
        {"read", [](int) { readOn(LeftJournalRule::RollBack); }},
        {"only-read", [](int) { readOn(LeftJournalRule::Refuse); }},
        {"die", die},
    };
    try {
        roles.at(role)(number);
        return EXIT_SUCCESS;
    } catch (const std::exception& error) {
        std::cerr << role << ": " << error.what() << std::endl;
        return EXIT_FAILURE;
    }
}

std::string programName;  // NOLINT(cppcoreguidelines-avoid-non-const-global-variables)

/// @return the exit code, as soon as the process has ended
std::future<int> startOther(const std::string& role, int number = 0) {
    const std::string command = "\"" + programName + "\" --role " + role + " " + std::to_string(number);
    return std::async(std::launch::async, [command] { return std::system(command.c_str()); });
}

TEST(OtherProcesses, LoseNoUpdateAndSeeNoHalfOne) {
    constexpr int kWriters = 3, kRounds = 12, kDying = 8;
    const test::TempFolder folder;
    const fs::path before = fs::current_path();
    fs::current_path(folder.path);
    const base::Bytes file = counter::file();
    std::ofstream(kFile, std::ios::binary).write(reinterpret_cast<const char*>(file.data()), std::ssize(file));
    std::vector<std::future<int>> readers, writers;
    for (const char* role : {"read", "only-read"})
        readers.push_back(startOther(role));
    for (int i = 0; i < kWriters; ++i)
        writers.push_back(startOther("count", kRounds));
    for (int i = 0; i < kDying; ++i)
        EXPECT_EQ(startOther("die", 20 + 7 * i).get(), EXIT_SUCCESS);
    for (auto& writer : writers)
        EXPECT_EQ(writer.get(), EXIT_SUCCESS);
    // Afterwards nobody is there who could roll back what the last one may have left.
    Database database = openFile(LeftJournalRule::RollBack);
    EXPECT_GE(counter::read(database), std::uint32_t{kWriters * kRounds});
    std::ofstream(kOver).put('x');
    for (auto& reader : readers)
        EXPECT_EQ(reader.get(), EXIT_SUCCESS);
    fs::current_path(before);
}

}  // namespace
}  // namespace jet

int main(int argc, char** argv) {
    jet::programName = std::filesystem::absolute(argv[0]).string();
    if (argc == 4) return jet::play(argv[2], std::stoi(argv[3]));
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
