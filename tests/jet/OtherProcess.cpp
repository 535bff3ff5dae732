#include "tests/jet/OtherProcess.h"

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <gmock/gmock.h>
#include <iostream>
#include <map>
#include <stdexcept>
#include <thread>
#include <utility>

#include "jet/storage/LockFile.h"
#include "jet/transaction/Transaction.h"
#include "tests/support/SampleFile.h"

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#include <process.h>
#include <share.h>
#include <sys/locking.h>
#else
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace test {
namespace {

namespace fs = std::filesystem;
using jet::Database;

constexpr const char* kFolderVariable = "TOLV_TEST_FOLDER";
constexpr const char* kRoleOption = "--role";
constexpr std::size_t kOffset = 4000;
constexpr jet::PageNumber kPages[] = {3, 12, 15};

std::string programName;  // NOLINT(cppcoreguidelines-avoid-non-const-global-variables)

fs::path folder() {
    const char* const name = std::getenv(kFolderVariable);
    if (name == nullptr) throw std::runtime_error("no folder");
    return name;
}

Database open(jet::LeftJournalRule rule) {
    return Database::open(jet::fileStorage(fileIn(folder()).u16string()), {}, rule);
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
int count(int rounds) {
    for (int round = 0; round < rounds; ++round) {
        insist([] {
            Database database = open(jet::LeftJournalRule::RollBack);
            counter::add(database);
        });
    }
    return OtherProcess::kDone;
}

/// Reads until the marker "go" exists. The number must be whole and never decrease.
int read(jet::LeftJournalRule rule) {
    std::uint32_t last = 0, reads = 0;
    while (!fs::exists(folder() / "go")) {
        try {
            Database database = open(rule);
            const std::uint32_t now = counter::read(database);
            if (now < last) throw std::runtime_error("the number has gone back");
            last = now;
            ++reads;
        } catch (const base::RuntimeError& error) {
            if (!isBusy(error)) throw;
        }
    }
    if (reads == 0) throw std::runtime_error("read nothing at all");
    return OtherProcess::kDone;
}

/// Counts, and dies after so many milliseconds, whatever it is doing.
[[noreturn]] int die(int milliseconds) {
    std::thread([milliseconds] {
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
        std::_Exit(OtherProcess::kDied);
    }).detach();
    while (true)
        count(1);
}

[[noreturn]] void holdUntilTold() {
    setMarker(folder(), "ready");
    waitForMarker(folder(), "go");
    std::_Exit(OtherProcess::kDied);
}

/// Stops in the middle of a change.
int holdTransaction(int) {
    Database database = open(jet::LeftJournalRule::RollBack);
    jet::Transaction transaction(database);
    transaction.change(kPages[0])[kOffset] = 77;
    holdUntilTold();
}

/// Acts like a user who has the file open through the original engine, with this slot of the lock file.
int holdUserSlot(int slot) {
    const fs::path path = jet::lockFilePath(fileIn(folder()).u16string());
    const auto offset = static_cast<long>(jet::kUserLocksOffset) + slot;
#ifdef _WIN32
    const int file = _wsopen(path.c_str(), _O_RDWR | _O_BINARY, _SH_DENYNO);
    if (file < 0 || _lseek(file, offset, SEEK_SET) != offset || _locking(file, _LK_NBLCK, 1) != 0)
        throw std::runtime_error("slot not locked");
#else
    const int file = ::open(path.c_str(), O_RDWR);
    struct flock range {};
    range.l_type = F_WRLCK;
    range.l_start = offset;
    range.l_len = 1;
    if (::fcntl(file, F_SETLK, &range) != 0) throw std::runtime_error("slot not locked");
#endif
    holdUntilTold();
}

int play(const std::string& role, int number) {
    const std::map<std::string, std::function<int(int)>> roles = {
        {"count", count},
        {"read", [](int) { return read(jet::LeftJournalRule::RollBack); }},
        {"only-read", [](int) { return read(jet::LeftJournalRule::Refuse); }},
        {"die", die},
        {"hold-transaction", holdTransaction},
        {"hold-user-slot", holdUserSlot},
    };
    try {
        return roles.at(role)(number);
    } catch (const std::exception& error) {
        std::cerr << role << ": " << error.what() << std::endl;
        return OtherProcess::kFault;
    }
}

}  // namespace

namespace counter {

base::Bytes file() {
    base::Bytes bytes = sampleFile({});
    for (const jet::PageNumber page : kPages)
        base::putU32(bytes, page * jet::kPageSize + kOffset, 0);
    return bytes;
}

void add(Database& database) {
    jet::Transaction transaction(database);
    for (const jet::PageNumber number : kPages) {
        const auto page = transaction.change(number);
        base::putU32(page, kOffset, base::ByteView(page).u32(kOffset) + 1);
    }
    transaction.commit();
}

std::uint32_t read(Database& database) {
    auto operation = database.beginRead();
    const std::uint32_t first = operation.page(kPages[0]).bytes.u32(kOffset);
    for (const jet::PageNumber number : kPages) {
        if (operation.page(number).bytes.u32(kOffset) != first) throw std::runtime_error("half a write");
    }
    return first;
}

}  // namespace counter

OtherProcess::OtherProcess(const fs::path& folder, const std::string& role, int number) {
    const std::string numberWord = std::to_string(number);
#ifdef _WIN32
    _putenv_s(kFolderVariable, folder.string().c_str());
    const char* const words[] = {"other", kRoleOption, role.c_str(), numberWord.c_str(), nullptr};
    id_ = _spawnv(_P_NOWAIT, programName.c_str(), words);
    if (id_ == -1) throw std::runtime_error("no other process");
#else
    ::setenv(kFolderVariable, folder.c_str(), 1);
    std::string name = "other", option = kRoleOption, roleWord = role, last = numberWord;
    char* const words[] = {name.data(), option.data(), roleWord.data(), last.data(), nullptr};
    pid_t id = 0;
    if (::posix_spawn(&id, programName.c_str(), nullptr, nullptr, words, environ) != 0)
        throw std::runtime_error("no other process");
    id_ = id;
#endif
}

OtherProcess::OtherProcess(OtherProcess&& other) noexcept : id_(std::exchange(other.id_, 0)) {}

OtherProcess::~OtherProcess() {
    if (id_ != 0) wait();
}

int OtherProcess::wait() {
    const std::intptr_t id = std::exchange(id_, 0);
    int status = 0;
#ifdef _WIN32
    return _cwait(&status, id, 0) == -1 ? kFault : status;
#else
    if (::waitpid(static_cast<pid_t>(id), &status, 0) < 0 || !WIFEXITED(status)) return kFault;
    return WEXITSTATUS(status);
#endif
}

fs::path fileIn(const fs::path& folder) {
    return folder / u"Kontenübersicht.mdb";
}

void setMarker(const fs::path& folder, const std::string& name) {
    std::ofstream(folder / name).put('x');
}

void waitForMarker(const fs::path& folder, const std::string& name) {
    while (!fs::exists(folder / name))
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
}

}  // namespace test

int main(int argc, char** argv) {
    test::programName = argv[0];
    if (argc == 4 && std::string(argv[1]) == test::kRoleOption) {
        return test::play(argv[2], std::stoi(argv[3]));
    }
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
