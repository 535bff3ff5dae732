#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "jet/LockFile.h"
#include "jet/Transaction.h"
#include "tests/jet/PagesInMemory.h"
#include "tests/support/SampleFile.h"

#ifndef _WIN32
#include <csignal>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace jet {
namespace {

namespace fs = std::filesystem;

base::Bytes contents(const fs::path& path) {
    std::ifstream stream(path, std::ios::binary);
    return base::Bytes(std::istreambuf_iterator<char>(stream), {});
}

void store(const fs::path& path, const base::Bytes& bytes) {
    std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(bytes.data()), std::ssize(bytes));
}

/// A file of this test alone, and programs that use it.
class FileStorageTest : public testing::Test {
protected:
    FileStorageTest() {
        fs::create_directory(folder_);
        store(file_, old_);
    }
    ~FileStorageTest() override {
        fs::permissions(folder_, fs::perms::owner_all);
        fs::permissions(file_, fs::perms::owner_all);
        fs::remove_all(folder_);
    }
    FileStorageTest(const FileStorageTest&) = delete;
    FileStorageTest& operator=(const FileStorageTest&) = delete;

    Database open() const { return Database::open(fileStorage(file_.u16string()), {}, LeftJournalRule::RollBack); }

    /// Adds 1 to a number in the file.
    static void count(Database& database) {
        Transaction transaction(database, WriteKind::Execute);
        const auto page = transaction.change(kCounterPage);
        base::putU32(page, kCounterOffset, base::ByteView(page).u32(kCounterOffset) + 1);
        transaction.commit();
    }
    std::uint32_t counted() const { return base::ByteView(contents(file_)).u32(kCounterPage * kPageSize + 4000); }

    std::string refusal(WriteKind kind) const {
        return errorOf([&] {
            Database database = open();
            const Transaction transaction(database, kind);
        });
    }

    static constexpr PageNumber kCounterPage = 12;
    static constexpr std::size_t kCounterOffset = 4000;
    base::Bytes old_ = [] {
        base::Bytes bytes = test::sampleFile({});
        base::putU32(bytes, kCounterPage * kPageSize + kCounterOffset, 0);
        return bytes;
    }();
    fs::path folder_ = fs::temp_directory_path() / ("tolv-storage-" + std::to_string(std::random_device{}()));
    fs::path file_ = folder_ / u"Kontenübersicht.mdb";
};

TEST_F(FileStorageTest, IsWrittenAndLeavesNothingBeside) {
    Database database = open();
    count(database);
    EXPECT_EQ(counted(), 1U);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder_), fs::directory_iterator()), 1);
    EXPECT_EQ(contents(file_).size(), old_.size());
}

TEST_F(FileStorageTest, LosesNoUpdateOfWritersAtTheSameTime) {
    constexpr int kWriters = 4, kRounds = 15;
    std::vector<std::thread> writers;
    writers.reserve(kWriters);
    for (int i = 0; i < kWriters; ++i) {
        writers.emplace_back([this] {
            Database database = open();
            for (int round = 0; round < kRounds;) {
                try {
                    count(database);
                    ++round;
                } catch (const base::RuntimeError& error) {
                    // Waited in vain on a busy machine; any other failure ends the test.
                    if (error.description().find(u"derzeit gesperrt") == base::Text::npos) throw;
                }
            }
        });
    }
    for (std::thread& writer : writers)
        writer.join();
    EXPECT_EQ(counted(), static_cast<std::uint32_t>(kWriters * kRounds));
}

TEST_F(FileStorageTest, WaitsForAWriterOnlySoLong) {
    Database first = open();
    Database second = open();
    const Transaction transaction(first, WriteKind::Execute);
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(errorOf([&] { Transaction(second, WriteKind::Recordset); }),
              "-2147217887: Aktualisieren nicht möglich; derzeit gesperrt durch einen anderen Benutzer der Datei '" +
                  base::toUtf8(file_.u16string()) + "'.");
    const auto waited = std::chrono::steady_clock::now() - begin;
    EXPECT_GE(waited, kLockWait);
    EXPECT_LT(waited, 3 * kLockWait);
}

TEST_F(FileStorageTest, FindsTheJournalByAnyNameOfTheFile) {
#ifndef _WIN32
    const fs::path link = folder_ / "Verknuepfung.mdb";
    fs::create_symlink(file_, link);
    EXPECT_EQ(fileStorage(link.u16string())->journalPath(), (fs::canonical(file_).u16string() + u"-journal"));
#else
    const base::Text shouted = folder_.u16string() + u"\\KONTENÜBERSICHT.MDB";
    EXPECT_EQ(fileStorage(shouted)->fileName(), file_.filename().u16string());
#endif
}

TEST_F(FileStorageTest, KeepsOnlyWritersOutOfAReadOnlyFile) {
    fs::permissions(file_, fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read);
#ifndef _WIN32
    // For the administrator nothing is read-only, so an ordinary user tries.
    const pid_t child = ::fork();
    if (child == 0) {
        fs::permissions(folder_, fs::perms::all);
        if (::getuid() == 0 && ::setuid(65534) != 0) ::_exit(3);
        const bool isRefused = refusal(WriteKind::Recordset).starts_with("-2147217911: ") &&
                               refusal(WriteKind::Execute).starts_with("-2147467259: Operation muss");
        ::_exit(isRefused ? 0 : 1);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
#else
    EXPECT_TRUE(refusal(WriteKind::Recordset).starts_with("-2147217911: ")) << refusal(WriteKind::Recordset);
    EXPECT_TRUE(refusal(WriteKind::Execute).starts_with("-2147467259: Operation muss"));
#endif
    EXPECT_EQ(contents(file_), old_);
}

TEST_F(FileStorageTest, DoesNotMindALockFileThatWasLeftBehind) {
    store(lockFilePath(file_.u16string()), base::Bytes(2 * kUserSlotBytes, 'A'));
    Database database = open();
    count(database);
    EXPECT_EQ(counted(), 1U);
    EXPECT_TRUE(fs::exists(lockFilePath(file_.u16string())));
}

#ifndef _WIN32

/// Runs in another process until it is killed; returns when it has reported that it is ready.
pid_t startHolder(const std::function<void()>& take) {
    int ready[2];
    EXPECT_EQ(::pipe(ready), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        take();
        [[maybe_unused]] const auto written = ::write(ready[1], "x", 1);
        while (true)
            ::pause();
    }
    char byte = 0;
    EXPECT_EQ(::read(ready[0], &byte, 1), 1);
    ::close(ready[0]);
    ::close(ready[1]);
    return child;
}

void kill(pid_t child) {
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
}

TEST_F(FileStorageTest, IsFreeAtOnceWhenItsHolderIsKilled) {
    const pid_t holder = startHolder([this] {
        static Database database = open();
        static Transaction transaction(database, WriteKind::Execute);
        transaction.change(kCounterPage)[kCounterOffset] = 77;
    });
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_THAT(errorOf([&] { Database::open(fileStorage(file_.u16string()), {}); }),
                testing::HasSubstr("wird bereits benutzt."));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 3 * kLockWait) << "waits only so long";
    kill(holder);
    Database database = open();
    count(database);
    EXPECT_EQ(counted(), 1U);
}

TEST_F(FileStorageTest, IsNotWrittenWhileTheOriginalEngineHoldsIt) {
    const fs::path lockFile = lockFilePath(file_.u16string());
    base::Bytes slots(3 * kUserSlotBytes, 0);
    const std::string computer = "PC-B\xDCRO", user = "Admin";
    std::copy(computer.begin(), computer.end(), slots.begin() + 2 * kUserSlotBytes);
    std::copy(user.begin(), user.end(), slots.begin() + 2 * kUserSlotBytes + 32);
    store(lockFile, slots);
    const pid_t holder = startHolder([&] {
        const int descriptor = ::open(lockFile.c_str(), O_RDWR);
        struct flock range {};
        range.l_type = F_WRLCK;
        range.l_start = static_cast<off_t>(kUserLocksOffset) + 2;
        range.l_len = 1;
        if (::fcntl(descriptor, F_SETLK, &range) != 0) ::_exit(1);
    });
    const std::string text =
        "Aktualisieren nicht möglich; derzeit gesperrt durch Benutzer 'Admin' auf Computer "
        "'PC-BÜRO'.";
    EXPECT_EQ(refusal(WriteKind::Recordset), "-2147217887: " + text);
    EXPECT_EQ(refusal(WriteKind::Execute), "-2147467259: " + text);
    kill(holder);
    EXPECT_EQ(refusal(WriteKind::Execute), "no error");
    EXPECT_EQ(contents(lockFile), slots);
}

#endif

}  // namespace
}  // namespace jet
