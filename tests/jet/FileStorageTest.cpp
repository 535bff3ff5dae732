#include <atomic>
#include <chrono>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "jet/storage/LockFile.h"
#include "jet/transaction/Transaction.h"
#include "tests/jet/OtherProcess.h"
#include "tests/jet/PagesInMemory.h"
#include "tests/support/FaultyStorage.h"

#ifdef _WIN32
#include <io.h>
#include <share.h>
#else
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace jet {
namespace {

namespace fs = std::filesystem;
namespace counter = test::counter;
using test::OtherProcess;

base::Bytes contents(const fs::path& path) {
    std::ifstream stream(path, std::ios::binary);
    return base::Bytes(std::istreambuf_iterator<char>(stream), {});
}

void store(const fs::path& path, const base::Bytes& bytes) {
    std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(bytes.data()), std::ssize(bytes));
}

/// Each test has its own file, and other programs that use it.
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

    Database open(LeftJournalRule rule = LeftJournalRule::RollBack) const {
        return Database::open(fileStorage(file_.u16string()), {}, rule);
    }
    void add() const {
        Database database = open();
        counter::add(database);
    }
    std::uint32_t counted() const {
        Database database = open();
        return counter::read(database);
    }

    OtherProcess start(const std::string& role, int number = 0) const { return {folder_, role, number}; }

    /// Starts a program that holds what its role says, until `release` ends it.
    OtherProcess startHolder(const std::string& role, int number = 0) const {
        OtherProcess holder = start(role, number);
        test::waitForMarker(folder_, "ready");
        return holder;
    }
    void release(OtherProcess& holder) const {
        test::setMarker(folder_, "go");
        EXPECT_EQ(holder.wait(), OtherProcess::kDied);
    }

    /// Puts the files here that a machine has when it stops at this step of a change, counted from 1.
    /// @return false if the change has fewer steps
    bool stopAt(int step) const {
        test::Machine machine(old_);
        machine.stopAt(step);
        errorOf([&] {
            Database database = Database::open(machine.storage(file_.filename().u16string()), {});
            counter::add(database);
        });
        store(file_, machine.file());
        if (machine.journal()) store(journal_, *machine.journal());
        if (machine.hasNewJournal()) store(newJournal_, {'h', 'a', 'l', 'f'});
        return machine.steps() >= step;
    }

    std::string openingError() const {
        return errorOf([&] { open(LeftJournalRule::Refuse); });
    }
    std::string writingError() const {
        return errorOf([&] {
            Database database = open();
            Transaction transaction(database);
            transaction.change(1)[100] ^= 1U;
            transaction.commit();
        });
    }

    fs::path folder_ = fs::temp_directory_path() / ("tolv-storage-" + std::to_string(std::random_device{}()));
    fs::path file_ = test::fileIn(folder_);
    fs::path journal_ = file_.u16string() + base::Text(kJournalSuffix);
    fs::path newJournal_ = file_.u16string() + base::Text(kNewJournalSuffix);
    base::Bytes old_ = counter::file();
};

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

TEST_F(FileStorageTest, IsOldOrNewWhereverItsWriterStopped) {
    int refused = 0, rolledBack = 0, kept = 0;
    for (int step = 1; stopAt(step); ++step) {
        SCOPED_TRACE("step " + std::to_string(step));
        const base::Bytes left = contents(file_);
        const std::string error = openingError();
        if (error != "no error") {
            EXPECT_THAT(error, testing::HasSubstr("-journal' hinterlassen"));
            EXPECT_EQ(contents(file_), left);
            ++refused;
        }
        const std::uint32_t number = counted();
        EXPECT_EQ(contents(file_) == old_, number == 0);
        EXPECT_FALSE(fs::exists(journal_));
        rolledBack += number == 0 && left != old_ ? 1 : 0;
        kept += number == 1 ? 1 : 0;
        if (number == 0) add();
        EXPECT_FALSE(fs::exists(newJournal_));
    }
    EXPECT_GE(refused, 3);
    EXPECT_GT(rolledBack, 1);
    EXPECT_GT(kept, 0);
}

TEST_F(FileStorageTest, LosesNoUpdateAndShowsNoHalfOneToOtherProcesses) {
    constexpr int kWriters = 3, kRounds = 12, kDying = 8;
    std::vector<OtherProcess> readers, writers;
    for (const char* role : {"read", "only-read"})
        readers.push_back(start(role));
    for (int i = 0; i < kWriters; ++i)
        writers.push_back(start("count", kRounds));
    for (int i = 0; i < kDying; ++i)
        EXPECT_EQ(start("die", 20 + 7 * i).wait(), OtherProcess::kDied);
    for (OtherProcess& writer : writers)
        EXPECT_EQ(writer.wait(), OtherProcess::kDone);
    test::setMarker(folder_, "go");
    for (OtherProcess& reader : readers)
        EXPECT_EQ(reader.wait(), OtherProcess::kDone);
    const std::uint32_t acknowledged = kWriters * kRounds;
    EXPECT_GE(counted(), acknowledged);
}

TEST_F(FileStorageTest, WaitsForAWriterOnlySoLongAndIsFreeWhenHeDies) {
    OtherProcess holder = startHolder("hold-transaction");
    const std::string name = "'" + base::toUtf8(file_.u16string()) + "'";
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(openingError(), "-2147467259: " + name + " konnte nicht verwendet werden; Datei wird bereits benutzt.");
    const auto waited = std::chrono::steady_clock::now() - begin;
    EXPECT_GE(waited, kLockWait);
    EXPECT_LT(waited, 3 * kLockWait);
    release(holder);
    add();
    EXPECT_EQ(counted(), 1U);
}

TEST_F(FileStorageTest, TellsTheWriterThatAnotherOneHoldsIt) {
    Database first = open();
    Database second = open();
    const Transaction transaction(first);
    EXPECT_EQ(errorOf([&] { Transaction{second}; }),
              "-2147467259: Aktualisieren nicht möglich; derzeit gesperrt durch einen anderen Benutzer der Datei '" +
                  base::toUtf8(file_.u16string()) + "'.");
}

TEST_F(FileStorageTest, LetsAWriterInBetweenReadersWhoAreNeverAllGone) {
    std::atomic<bool> isOver = false;
    std::vector<std::thread> readers;
    readers.reserve(2);
    for (const int start : {0, 20}) {
        readers.emplace_back([this, start, &isOver] {
            Database database = open();
            std::this_thread::sleep_for(std::chrono::milliseconds(start));
            while (!isOver) {
                const ReadOperation operation(database);
                std::this_thread::sleep_for(std::chrono::milliseconds(40));
            }
        });
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_EQ(errorOf([this] { add(); }), "no error");
    isOver = true;
    for (std::thread& reader : readers)
        reader.join();
    EXPECT_EQ(counted(), 1U);
}

/// Afterwards the lock file is one that was left behind, which hinders nobody.
TEST_F(FileStorageTest, IsNotWrittenWhileTheOriginalEngineHasItOpen) {
    const fs::path lockFile = lockFilePath(file_.u16string());
    base::Bytes slots(3 * kUserSlotBytes, 0);
    const std::string computer = "PC-B\xDCRO", user = "Admin";
    std::copy(computer.begin(), computer.end(), slots.begin() + 2 * kUserSlotBytes);
    std::copy(user.begin(), user.end(), slots.begin() + 2 * kUserSlotBytes + 32);
    store(lockFile, slots);
    OtherProcess holder = startHolder("hold-user-slot", 2);
    const std::string text =
        "Aktualisieren nicht möglich; derzeit gesperrt durch Benutzer 'Admin' auf Computer "
        "'PC-BÜRO'.";
    EXPECT_EQ(writingError(), "-2147467259: " + text);
    EXPECT_EQ(counted(), 0U);
    release(holder);
    EXPECT_EQ(writingError(), "no error");
    EXPECT_EQ(contents(lockFile), slots);
}

/// Something that is not an ordinary file has the journal's name. It is refused, and neither followed nor replaced.
TEST_F(FileStorageTest, IsNotWrittenWhereSomethingElseHasTheJournalsName) {
    const fs::path victim = folder_ / "fremd";
    store(victim, old_);
    const std::vector<std::function<void(const fs::path&)>> makers = {
        [](const fs::path& path) { fs::create_directory(path); },
#ifndef _WIN32
        [](const fs::path& path) { ::mkfifo(path.c_str(), 0666); },
        [&](const fs::path& path) { fs::create_symlink(victim, path); },
        [&](const fs::path& path) { fs::create_symlink(folder_ / "nirgends", path); },
#endif
    };
    for (const fs::path& path : {journal_, newJournal_}) {
        for (const auto& make : makers) {
            make(path);
            EXPECT_NE(writingError(), "no error");
            EXPECT_NE(fs::symlink_status(path).type(), fs::file_type::regular);
            EXPECT_TRUE(fs::remove(path));
        }
    }
    EXPECT_TRUE(contents(file_) == old_ && contents(victim) == old_ && !fs::exists(folder_ / "nirgends"));
    EXPECT_EQ(writingError(), "no error");
}

TEST_F(FileStorageTest, IsNotWrittenIfTheOriginalEngineOpensItWhileTheWriterWaits) {
    store(lockFilePath(file_.u16string()), base::Bytes(kUserSlotBytes, 'A'));
    Database database = open(), second = open();
    auto transaction = std::make_unique<Transaction>(database);
    std::string error;
    std::thread waiting([&] { error = errorOf([&] { Transaction{second}; }); });
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    OtherProcess holder = startHolder("hold-user-slot");
    transaction.reset();
    waiting.join();
    EXPECT_THAT(error, testing::HasSubstr("derzeit gesperrt durch Benutzer 'AAAA"));
    release(holder);
}

#ifdef _WIN32

/// A handle of another program.
class Foreign {
public:
    Foreign(const fs::path& path, int access, int share) : file_(_wsopen(path.c_str(), access | _O_BINARY, share)) {}
    ~Foreign() {
        if (isOpen()) _close(file_);
    }
    Foreign(const Foreign&) = delete;
    Foreign& operator=(const Foreign&) = delete;

    bool isOpen() const { return file_ >= 0; }

private:
    int file_;
};

TEST_F(FileStorageTest, KeepsOtherProgramsFromWritingWhileItIsWritten) {
    Database database = open();
    {
        const Transaction transaction(database);
        EXPECT_FALSE(Foreign(file_, _O_RDWR, _SH_DENYNO).isOpen());
        EXPECT_TRUE(Foreign(file_, _O_RDONLY, _SH_DENYNO).isOpen());
    }
    EXPECT_TRUE(Foreign(file_, _O_RDWR, _SH_DENYNO).isOpen());
}

TEST_F(FileStorageTest, WaitsForAScannerThatLooksAtTheJournal) {
    const auto storage = fileStorage(file_.u16string());
    const auto whileScanned = [](const fs::path& path, const std::function<bool()>& step) {
        auto scanner = std::make_unique<Foreign>(path, _O_RDONLY, _SH_DENYNO);
        EXPECT_TRUE(scanner->isOpen());
        std::thread end([&scanner] {
            std::this_thread::sleep_for(std::chrono::milliseconds(80));
            scanner.reset();
        });
        EXPECT_TRUE(step());
        end.join();
    };
    EXPECT_TRUE(storage->createJournal());
    whileScanned(newJournal_, [&] {
        storage->finishJournal();
        return true;
    });
    whileScanned(journal_, [&] { return storage->removeJournal(); });
    EXPECT_FALSE(fs::exists(journal_) || fs::exists(newJournal_));
}

TEST_F(FileStorageTest, IsReadAsFarAsOtherProgramsLetIt) {
    {
        const Foreign writer(file_, _O_RDWR, _SH_DENYNO);
        EXPECT_EQ(counted(), 0U);
        EXPECT_THAT(writingError(), testing::StartsWith("-2147467259: Aktualisieren nicht möglich"));
    }
    {
        const Foreign jealous(file_, _O_RDWR, _SH_DENYRW);
        EXPECT_THAT(openingError(), testing::EndsWith("konnte nicht verwendet werden; Datei wird bereits benutzt."));
    }
    EXPECT_EQ(contents(file_), old_);
    EXPECT_EQ(writingError(), "no error");
}

#else

constexpr fs::perms kWrite = fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write;

/// Nothing is read-only for the administrator, so another process tries this as an ordinary user.
/// @return whether everything ended as expected
bool asOrdinaryUser(const std::function<bool()>& attempt) {
    const pid_t child = ::fork();
    if (child == 0) {
        if (::getuid() == 0 && ::setuid(65534) != 0) ::_exit(2);
        ::_exit(attempt() ? 0 : 1);
    }
    int status = 0;
    return ::waitpid(child, &status, 0) == child && status == 0;
}

TEST_F(FileStorageTest, IsReadButNotWrittenWhereItMayNotBe) {
    const auto isOnlyRead = [this] {
        return counted() == 0 && writingError().starts_with("-2147467259: Operation muss");
    };
    fs::permissions(folder_, fs::perms::all);
    fs::permissions(file_, fs::perms::all & ~kWrite);
    EXPECT_TRUE(asOrdinaryUser(isOnlyRead)) << "file";
    fs::permissions(file_, fs::perms::all);
    fs::permissions(folder_, fs::perms::all & ~kWrite);
    EXPECT_TRUE(asOrdinaryUser(isOnlyRead)) << "folder";
    EXPECT_EQ(contents(file_), old_);
    EXPECT_FALSE(fs::exists(journal_));
}

/// Mode, owner and group of the file's journal if the present user makes it.
struct stat journalOf(const fs::path& file) {
    const auto storage = fileStorage(file.u16string());
    EXPECT_TRUE(storage->createJournal());
    struct stat status {};
    EXPECT_EQ(::stat((file.string() + "-journal-neu").c_str(), &status), 0);
    storage->removeNewJournal();
    return status;
}

TEST_F(FileStorageTest, HasAJournalForThoseWhoMayUseTheFileAndNobodyElse) {
    const mode_t mask = ::umask(027);
    const bool isAdministrator = ::chown(file_.c_str(), 1234, 4321) == 0;
    struct stat file {};
    ASSERT_EQ(::stat(file_.c_str(), &file), 0);
    for (const mode_t mode : {0600U, 0640U, 0660U, 0606U, 0666U}) {
        fs::permissions(file_, static_cast<fs::perms>(mode));
        const struct stat journal = journalOf(file_);
        EXPECT_EQ(journal.st_mode & 0777U, mode);
        EXPECT_TRUE(journal.st_uid == file.st_uid && journal.st_gid == file.st_gid);
    }
    ::umask(mask);
    if (!isAdministrator) return;
    fs::permissions(folder_, fs::perms::all);
    // A journal by another user cannot get the file's group. For the journal, members of that group are then "others".
    const auto isMadeWith = [this](mode_t mode) { return (journalOf(file_).st_mode & 0777U) == mode; };
    for (const auto& [mode, expected] : {std::pair(0666U, 0666U), {0606U, 0600U}, {0646U, 0644U}}) {
        fs::permissions(file_, static_cast<fs::perms>(mode));
        EXPECT_TRUE(asOrdinaryUser([&, wanted = expected] { return isMadeWith(wanted); })) << mode;
    }
}

TEST_F(FileStorageTest, IsNotShownHalfWrittenToOneWhoMayNotRollBack) {
    constexpr int kMiddleOfSecondPage = 7;  // made, written, flushed, renamed, name flushed, first page, second page
    ASSERT_TRUE(stopAt(kMiddleOfSecondPage));
    const base::Bytes half = contents(file_), journal = contents(journal_);
    ASSERT_NE(half, old_);
    for (const fs::path& path : {file_, journal_, folder_})
        fs::permissions(path, fs::perms::all & ~kWrite);
    EXPECT_TRUE(asOrdinaryUser([this] {
        return errorOf([&] { open(LeftJournalRule::RollBack); }).find("-journal' hinterlassen") != std::string::npos;
    }));
    EXPECT_TRUE(contents(file_) == half && contents(journal_) == journal);
    for (const fs::path& path : {folder_, journal_, file_})
        fs::permissions(path, fs::perms::all);
    EXPECT_EQ(counted(), 0U);
    EXPECT_EQ(contents(file_), old_);
}

#endif

}  // namespace
}  // namespace jet
