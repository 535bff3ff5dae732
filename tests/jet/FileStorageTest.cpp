#include <atomic>
#include <chrono>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "jet/storage/LockFile.h"
#include "jet/transaction/Transaction.h"
#include "tests/jet/Counter.h"
#include "tests/jet/PagesInMemory.h"
#include "tests/support/FaultyStorage.h"
#include "tests/support/TempFolder.h"

#ifdef _WIN32
#include <io.h>
#include <share.h>
#include <sys/locking.h>
#else
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace jet {
namespace {

namespace fs = std::filesystem;
namespace counter = test::counter;
using testing::HasSubstr;

const std::string kNoError = "no error";

base::Bytes contents(const fs::path& path) {
    std::ifstream stream(path, std::ios::binary);
    return base::Bytes(std::istreambuf_iterator<char>(stream), {});
}

void store(const fs::path& path, const base::Bytes& bytes) {
    std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(bytes.data()), std::ssize(bytes));
}

/// A handle of another program.
class Foreign {
public:
#ifdef _WIN32
    explicit Foreign(const fs::path& path, int access = _O_RDWR, int share = _SH_DENYNO)
        : file_(_wsopen(path.c_str(), access | _O_BINARY, share)) {}
    ~Foreign() {
        if (isOpen()) _close(file_);
    }
    bool lock(std::uint64_t place) const {
        const auto offset = static_cast<long>(place);
        return _lseek(file_, offset, SEEK_SET) == offset && _locking(file_, _LK_NBLCK, 1) == 0;
    }
#else
    explicit Foreign(const fs::path& path) : file_(::open(path.c_str(), O_RDWR)) {}
    ~Foreign() {
        ::close(file_);
    }
    bool lock(std::uint64_t place) const {
        struct flock range {};
        range.l_type = F_WRLCK;
        range.l_start = static_cast<off_t>(place);
        range.l_len = 1;
        return ::fcntl(file_, F_OFD_SETLK, &range) == 0;
    }
#endif
    Foreign(const Foreign&) = delete;
    Foreign& operator=(const Foreign&) = delete;

    bool isOpen() const {
        return file_ >= 0;
    }

private:
    int file_;
};

/// A writer in the middle of a change.
struct Writer {
    explicit Writer(Database opened) : database(std::move(opened)) {}
    Database database;
    Transaction transaction{database};
};

/// Something that a program meets at its file.
struct Situation {
    const char* what;
    std::function<void()> begin;
    std::string reading, writing;  ///< parts of the errors
    std::function<void()> end = [] {};
    std::function<bool(const std::function<bool()>&)> byWhom = [](const auto& attempts) { return attempts(); };
};

/// Each test has its own file, in its own folder.
class FileStorageTest : public testing::Test {
protected:
    FileStorageTest() { reset(); }

    void reset() const {
        for (const auto& entry : fs::directory_iterator(folder_.path))
            fs::remove_all(entry.path());
        store(file_, old_);
        fs::last_write_time(file_, fs::file_time_type::clock::now() - std::chrono::hours(24));
    }

    Database open(LeftJournalRule rule = LeftJournalRule::RollBack) const {
        return Database::open(fileStorage(file_.u16string()), {}, rule);
    }
    std::string openingError(LeftJournalRule rule = LeftJournalRule::Refuse) const {
        return errorOf([&] {
            Database database = open(rule);
            counter::read(database);
        });
    }
    void add() const {
        Database database = open();
        counter::add(database);
    }
    std::string writingError() const {
        return errorOf([&] { add(); });
    }
    std::uint32_t counted() const {
        Database database = open();
        return counter::read(database);
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

    /// Kind, time of the last change and contents of each file in the folder.
    auto everything() const {
        std::map<fs::path, std::tuple<fs::file_type, fs::file_time_type, base::Bytes>> all;
        for (const auto& entry : fs::directory_iterator(folder_.path)) {
            auto& [type, time, bytes] = all[entry.path()];
            type = entry.symlink_status().type();
            if (type != fs::file_type::regular) continue;
            time = entry.last_write_time();
            bytes = contents(entry.path());
        }
        return all;
    }

    /// Reading changes nothing, and neither does a write that is refused. Nothing lasts longer than the situation.
    void meet(const Situation& situation) const {
        SCOPED_TRACE(situation.what);
        reset();
        const bool isWritten = situation.writing == kNoError;
        Database early = open();
        situation.begin();
        const auto before = everything();
        const auto attempts = [&] {
            const auto begin = std::chrono::steady_clock::now();
            const std::string reading = openingError(isWritten ? LeftJournalRule::Refuse : LeftJournalRule::RollBack);
            const auto waited = std::chrono::steady_clock::now() - begin;
            EXPECT_THAT(reading, HasSubstr(situation.reading));
            EXPECT_EQ(waited >= kLockWait, reading.ends_with("wird bereits benutzt."));
            EXPECT_LT(waited, 3 * kLockWait);
            EXPECT_EQ(everything(), before);
            EXPECT_THAT(errorOf([&] { counter::add(early); }), HasSubstr(situation.writing));
            return !HasFailure();
        };
        EXPECT_TRUE(situation.byWhom(attempts));
        EXPECT_EQ(everything() != before, isWritten);
        situation.end();
        for (const fs::path& path : {journal_, newJournal_})
            if (!fs::is_regular_file(fs::symlink_status(path))) fs::remove(path);
        EXPECT_EQ(writingError(), kNoError);
        EXPECT_EQ(counted(), isWritten ? 2U : 1U);
    }

    const test::TempFolder folder_;
    const fs::path file_ = folder_ / u"Kontenübersicht.mdb";
    const fs::path journal_ = file_.u16string() + base::Text(kJournalSuffix);
    const fs::path newJournal_ = file_.u16string() + base::Text(kNewJournalSuffix);
    const fs::path lockFile_ = lockFilePath(file_.u16string());
    const base::Bytes old_ = counter::file();
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

TEST_F(FileStorageTest, IsReadAndWrittenAsFarAsOthersAllow) {
    const std::string file = "'" + base::toUtf8(file_.u16string()) + "'", error = "-2147467259: ";
    const std::string locked = error + "Aktualisieren nicht möglich; derzeit gesperrt durch ";
    meet({"nobody", [] {}, kNoError, kNoError});
    std::unique_ptr<Writer> writer;
    meet({"a writer", [&] { writer = std::make_unique<Writer>(open()); },
          error + file + " konnte nicht verwendet werden; Datei wird bereits benutzt.",
          locked + "einen anderen Benutzer der Datei " + file + ".", [&] { writer.reset(); }});

    base::Bytes slots(3 * kUserSlotBytes, 0);
    const std::string computer = "PC-B\xDCRO", user = "Admin";
    std::copy(computer.begin(), computer.end(), slots.begin() + 2 * kUserSlotBytes);
    std::copy(user.begin(), user.end(), slots.begin() + 2 * kUserSlotBytes + 32);
    meet({"a lock file that was left behind", [&] { store(lockFile_, slots); }, kNoError, kNoError});
    std::unique_ptr<Foreign> original;
    const auto comeIn = [&] {
        store(lockFile_, slots);
        original = std::make_unique<Foreign>(lockFile_);
        EXPECT_TRUE(original->lock(kUserLocksOffset + 2));
    };
    meet({"a user of the original engine", comeIn, kNoError, locked + "Benutzer 'Admin' auf Computer 'PC-BÜRO'.",
          [&] { original.reset(); }});
}

/// It is neither followed nor replaced.
TEST_F(FileStorageTest, IsNotWrittenWhereSomethingElseHasTheJournalsName) {
    for (const fs::path& name : {journal_, newJournal_}) {
        const std::string error = "-2147467259: ", reading = name == journal_ ? error : kNoError;
        meet({"a folder", [&] { fs::create_directory(name); }, reading, error});
#ifndef _WIN32
        meet({"a pipe", [&] { ::mkfifo(name.c_str(), 0666); }, reading, error});
        const fs::path target = folder_ / "fremd";
        meet({"a link to nothing", [&] { fs::create_symlink(target, name); }, reading, error});
        const auto link = [&] {
            store(target, old_);
            fs::create_symlink(target, name);
        };
        meet({"a link", link, reading, error});
#endif
    }
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

TEST_F(FileStorageTest, IsNotWrittenIfTheOriginalEngineOpensItWhileTheWriterWaits) {
    store(lockFile_, base::Bytes(kUserSlotBytes, 'A'));
    Database second = open();
    auto writer = std::make_unique<Writer>(open());
    std::string error;
    std::thread waiting([&] { error = errorOf([&] { Transaction{second}; }); });
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    const Foreign other(lockFile_);
    EXPECT_TRUE(other.lock(kUserLocksOffset));
    writer.reset();
    waiting.join();
    EXPECT_THAT(error, HasSubstr("derzeit gesperrt durch Benutzer 'AAAA"));
}

TEST_F(FileStorageTest, SaysWhyItCannotBeOpened) {
    const auto error = [](const fs::path& path, OpenMode mode) {
        return errorOf([&] { openFile(path.u16string(), mode); });
    };
    EXPECT_THAT(error(folder_ / "fehlt.mdb", OpenMode::Read), HasSubstr("nicht gefunden."));
    EXPECT_THAT(error(folder_ / "fehlt/fehlt.mdb", OpenMode::Read), HasSubstr("ist kein zulässiger Pfad."));
    EXPECT_THAT(error(folder_.path, OpenMode::Read), HasSubstr("Berechtigung"));
    EXPECT_NE(error(file_, OpenMode::CreateNew), kNoError) << "an existing file is never taken for a new one";
    EXPECT_EQ(error(folder_ / "neu.mdb", OpenMode::CreateNew), kNoError);
}

TEST_F(FileStorageTest, IsReadByManyAndWrittenByOne) {
    constexpr std::chrono::milliseconds kNow{0};
    const auto first = openFile(file_.u16string(), OpenMode::ReadWrite);
    const auto second = openFile(file_.u16string(), OpenMode::ReadWrite);
    EXPECT_TRUE(first->lock(LockKind::Shared, kNow));
    EXPECT_TRUE(second->lock(LockKind::Shared, kNow));
    EXPECT_FALSE(second->lock(LockKind::Exclusive, kNow));
    first->lock(LockKind::None, kNow);
    EXPECT_TRUE(second->lock(LockKind::Exclusive, kNow));
    EXPECT_FALSE(first->lock(LockKind::Shared, kNow));
    EXPECT_TRUE(second->lock(LockKind::Shared, kNow)) << "an exclusive lock can be lowered";
    EXPECT_TRUE(first->lock(LockKind::Shared, kNow));
}

TEST_F(FileStorageTest, IsFreeAfterAnOperationThatFailed) {
    Database database = open();
    const auto writer = openFile(file_.u16string(), OpenMode::ReadWrite);
    writer->write(0x14, base::Bytes{9});
    EXPECT_THAT(errorOf([&] { database.beginRead(); }), HasSubstr("Nicht erkennbares"));
    EXPECT_TRUE(writer->lock(LockKind::Exclusive, {}));
#ifndef _WIN32
    writer->lock(LockKind::None, {});
    fs::rename(folder_.path, folder_.path.string() + "-fort");
    store(folder_.path, {});
    EXPECT_NE(errorOf([&] { database.beginRead(); }), kNoError) << "nobody can look for a journal";
    EXPECT_TRUE(writer->lock(LockKind::Exclusive, {}));
    fs::remove(folder_.path);
    fs::rename(folder_.path.string() + "-fort", folder_.path);
#endif
}

#ifdef _WIN32

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
    constexpr int kMiddleOfSecondPage = 7;  // made, written, flushed, renamed, name flushed, first page, second page
    constexpr auto kWrite = fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write;
    const auto permit = [&](fs::perms rights, const std::vector<fs::path>& paths) {
        for (const fs::path& path : paths)
            fs::permissions(path, rights);
    };
    const std::vector<fs::path> file{file_}, folder{folder_.path}, all{folder_.path, file_, journal_};
    const struct {
        const std::vector<fs::path>& paths;
        int stop;
        std::string reading;
    } cases[] = {{file, 0, kNoError}, {folder, 0, kNoError}, {all, kMiddleOfSecondPage, "-journal' hinterlassen"}};
    for (const auto& [paths, stop, reading] : cases) {
        const auto protect = [&, &stop = stop, &paths = paths] {
            permit(fs::perms::all, {folder_.path, file_});
            if (stop > 0) stopAt(stop);
            permit(fs::perms::all & ~kWrite, paths);
        };
        const auto release = [&, &paths = paths] { permit(fs::perms::all, paths); };
        meet({"protected", protect, reading, "-2147467259: Operation muss eine aktualisierbare", release,
              asOrdinaryUser});
    }
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
    fs::permissions(folder_.path, fs::perms::all);
    // A journal by another user cannot get the file's group. For the journal, members of that group are then "others".
    const auto isMadeWith = [this](mode_t mode) { return (journalOf(file_).st_mode & 0777U) == mode; };
    for (const auto& [mode, expected] : {std::pair(0666U, 0666U), {0606U, 0600U}, {0646U, 0644U}}) {
        fs::permissions(file_, static_cast<fs::perms>(mode));
        EXPECT_TRUE(asOrdinaryUser([&, wanted = expected] { return isMadeWith(wanted); })) << mode;
    }
}

#endif

}  // namespace
}  // namespace jet
