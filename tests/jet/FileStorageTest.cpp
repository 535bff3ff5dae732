#include <atomic>
#include <chrono>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <future>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "jet/storage/LockFile.h"
#include "jet/transaction/Transaction.h"
#include "tests/jet/PagesInMemory.h"
#include "tests/support/FaultyStorage.h"
#include "tests/support/SampleFile.h"
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
using testing::HasSubstr;

const std::string kNoError = "no error";

/// A file that holds one number, stored on several pages, so that a reader notices half a write.
namespace counter {

constexpr std::size_t kOffset = 4000;
constexpr PageNumber kPages[] = {3, 12, 15};

/// A file whose number is 0.
base::Bytes file() {
    base::Bytes bytes = test::sampleFile({});
    for (const PageNumber page : kPages)
        base::putU32(bytes, page * kPageSize + kOffset, 0);
    return bytes;
}

/// Adds 1, as one transaction.
void add(Database& database) {
    Transaction transaction(database);
    for (const PageNumber number : kPages) {
        const auto page = transaction.change(number);
        base::putU32(page, kOffset, base::ByteView(page).u32(kOffset) + 1);
    }
    transaction.commit();
}

/// @throws std::runtime_error if the pages disagree
std::uint32_t read(Database& database) {
    auto operation = database.beginRead();
    const std::uint32_t first = operation.page(kPages[0]).bytes.u32(kOffset);
    for (const PageNumber number : kPages)
        if (operation.page(number).bytes.u32(kOffset) != first) throw std::runtime_error("half a write");
    return first;
}

}  // namespace counter

base::Bytes contents(const fs::path& path) {
    std::ifstream stream(path, std::ios::binary);
    return base::Bytes(std::istreambuf_iterator<char>(stream), {});
}

void store(const fs::path& path, const base::Bytes& bytes) {
    std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(bytes.data()), std::ssize(bytes));
}

/// A file handle as another program has it.
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

/// A reader or writer in the middle of its work.
template <typename Operation>
struct Running {
    explicit Running(Database opened) : database(std::move(opened)) {}
    Database database;
    Operation operation{database};
};

/// What a program may find at its file: other users, left files, missing rights.
struct Situation {
    const char* what;
    std::function<void()> begin;
    std::string reading, writing;  ///< parts of the errors
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
    std::uint32_t counted() const {
        Database database = open();
        return counter::read(database);
    }

    /// Makes the files what they are after a machine has stopped at this step of a change, counted from 1.
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

    /// Neither reading nor a refused write may change anything, and after the situation everything works again.
    void tryIn(const Situation& situation) {
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
        held_.reset();
        for (const fs::path& path : {journal_, newJournal_})
            if (!fs::is_regular_file(fs::symlink_status(path))) fs::remove(path);
        permit(fs::perms::all, {folder_.path, file_, journal_});
        EXPECT_EQ(errorOf([&] { counter::add(early); }), kNoError);
        const std::uint32_t added = isWritten ? 2 : 1, number = counted();
        EXPECT_TRUE(number == added || number == added + 1) << number << ": a stopped writer may have added 1";
    }

    static void permit(fs::perms rights, const std::vector<fs::path>& paths) {
        for (const fs::path& path : paths)
            if (fs::exists(path)) fs::permissions(path, rights);
    }

    std::shared_ptr<void> held_;  ///< is open as long as the situation lasts
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
    const base::Text upperCase = folder_.path.u16string() + u"\\KONTENÜBERSICHT.MDB";
    EXPECT_EQ(fileStorage(upperCase)->fileName(), file_.filename().u16string());
#endif
}

TEST_F(FileStorageTest, CanBeReadAndWrittenWhereverAWriterStopped) {
    int left = 0;
    bool isMore = true;
    for (int step = 1; isMore; ++step) {
        SCOPED_TRACE(step);
        stopAt(step);
        const bool isLeft = fs::exists(journal_);
        left += isLeft ? 1 : 0;
        tryIn({"a stopped writer", [&] { isMore = stopAt(step); }, isLeft ? "-journal' hinterlassen" : kNoError,
               kNoError});
        EXPECT_FALSE(fs::exists(journal_) || fs::exists(newJournal_));
    }
    EXPECT_GE(left, 3);
}

TEST_F(FileStorageTest, RespectsTheLocksOfOtherUsers) {
    const std::string file = "'" + base::toUtf8(file_.u16string()) + "'", error = "-2147467259: ";
    const std::string locked = error + "Aktualisieren nicht möglich; derzeit gesperrt durch ";
    const std::string byAnother = locked + "einen anderen Benutzer der Datei " + file + ".";
    tryIn({"nobody", [] {}, kNoError, kNoError});
    tryIn({"a writer", [&] { held_ = std::make_shared<Running<Transaction>>(open()); },
           error + file + " konnte nicht verwendet werden; Datei wird bereits benutzt.", byAnother});
    tryIn({"a reader", [&] { held_ = std::make_shared<Running<ReadOperation>>(open()); }, kNoError, byAnother});

    base::Bytes slots(3 * kUserSlotBytes, 0);
    const std::string computer = "PC-B\xDCRO", user = "Admin";
    std::copy(computer.begin(), computer.end(), slots.begin() + 2 * kUserSlotBytes);
    std::copy(user.begin(), user.end(), slots.begin() + 2 * kUserSlotBytes + 32);
    tryIn({"a lock file that was left behind", [&] { store(lockFile_, slots); }, kNoError, kNoError});
    const auto addUser = [&] {
        store(lockFile_, slots);
        const auto original = std::make_shared<Foreign>(lockFile_);
        EXPECT_TRUE(original->lock(kUserLocksOffset + 2));
        held_ = original;
    };
    tryIn({"a user of the original engine", addUser, kNoError, locked + "Benutzer 'Admin' auf Computer 'PC-BÜRO'."});
}

/// A link there is not followed, and nothing there is replaced.
TEST_F(FileStorageTest, IsNotWrittenIfSomethingElseHasTheNameOfTheJournal) {
    for (const fs::path& name : {journal_, newJournal_}) {
        const std::string error = "-2147467259: ", reading = name == journal_ ? error : kNoError;
        tryIn({"a folder", [&] { fs::create_directory(name); }, reading, error});
#ifndef _WIN32
        tryIn({"a pipe", [&] { ::mkfifo(name.c_str(), 0666); }, reading, error});
        const fs::path target = folder_ / "fremd";
        tryIn({"a link to nothing", [&] { fs::create_symlink(target, name); }, reading, error});
        constexpr int kFirstPage = 6;  // the journal is complete, the file still unchanged
        const auto link = [&] {
            stopAt(kFirstPage);
            fs::rename(journal_, target);
            fs::create_symlink(target, name);
        };
        tryIn({"a link to a journal", link, reading, error});
#endif
    }
}

/// All work at the same time, each with its own open file. At any time some reader holds a lock, but no writer may time
/// out.
TEST_F(FileStorageTest, ConcurrentUseLosesNoUpdateAndShowsNoHalfOne) {
    constexpr std::uint32_t kWriters = 3, kRounds = 12;
    std::atomic<bool> isOver = false;
    std::vector<std::future<std::uint32_t>> readers, writers;
    for (int i = 0; i < 3; ++i) {
        readers.push_back(std::async(std::launch::async, [&] {
            std::uint32_t last = 0;
            for (Database database = open(); !isOver;) {
                const std::uint32_t now = counter::read(database);
                if (now < last) throw std::runtime_error("the number has become smaller");
                last = now;
                const ReadOperation held(database);
                std::this_thread::sleep_for(std::chrono::milliseconds(20));
            }
            return last;
        }));
    }
    for (std::uint32_t i = 0; i < kWriters; ++i) {
        writers.push_back(std::async(std::launch::async, [&] {
            for (std::uint32_t round = 0; round < kRounds; ++round)
                add();
            return kRounds;
        }));
    }
    for (auto& writer : writers)
        EXPECT_NO_THROW(writer.get());
    isOver = true;
    for (auto& reader : readers)
        EXPECT_NO_THROW(reader.get());
    EXPECT_EQ(counted(), kWriters * kRounds);
}

TEST_F(FileStorageTest, IsNotWrittenIfTheOriginalEngineOpensItWhileTheWriterWaits) {
    store(lockFile_, base::Bytes(kUserSlotBytes, 'A'));
    Database second = open();
    auto writer = std::make_unique<Running<Transaction>>(open());
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
    EXPECT_NE(error(file_, OpenMode::CreateNew), kNoError) << "an existing file is not overwritten";
    EXPECT_EQ(error(folder_ / "neu.mdb", OpenMode::CreateNew), kNoError);
}

TEST_F(FileStorageTest, IsNotLockedAfterAnOperationThatFailed) {
    Database database = open();
    const auto writer = openFile(file_.u16string(), OpenMode::ReadWrite);
    writer->write(0x14, base::Bytes{9});
    EXPECT_THAT(errorOf([&] { database.beginRead(); }), HasSubstr("Nicht erkennbares"));
    EXPECT_TRUE(writer->lock(LockKind::Exclusive, {}));
#ifndef _WIN32
    writer->lock(LockKind::None, {});
    fs::rename(folder_.path, folder_.path.string() + "-fort");
    store(folder_.path, {});
    EXPECT_NE(errorOf([&] { database.beginRead(); }), kNoError) << "the folder of the journal cannot be read";
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

TEST_F(FileStorageTest, WaitsForAVirusScannerThatReadsTheJournal) {
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

TEST_F(FileStorageTest, RespectsTheShareModesOfOtherPrograms) {
    tryIn({"a program that writes", [&] { held_ = std::make_shared<Foreign>(file_); }, kNoError,
           "-2147467259: Aktualisieren nicht möglich"});
    const Foreign exclusive(file_, _O_RDWR, _SH_DENYRW);
    EXPECT_THAT(openingError(), testing::EndsWith("konnte nicht verwendet werden; Datei wird bereits benutzt."));
}

#else

/// Makes the attempt in another process as an ordinary user, because root may write everything.
/// @return whether it returned true
bool asOrdinaryUser(const std::function<bool()>& attempt) {
    const pid_t child = ::fork();
    if (child == 0) {
        if (::getuid() == 0 && ::setuid(65534) != 0) ::_exit(2);
        ::_exit(attempt() ? 0 : 1);
    }
    int status = 0;
    return ::waitpid(child, &status, 0) == child && status == 0;
}

TEST_F(FileStorageTest, IsReadButNotWrittenWithoutWritePermission) {
    constexpr int kMiddleOfSecondPage = 7;  // create, write, flush, rename, flush the name, two pages
    constexpr auto kWrite = fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write;
    const std::string left = "-journal' hinterlassen", readOnly = "-2147467259: Operation muss eine aktualisierbare";
    const auto protect = [&](const std::vector<fs::path>& paths) {
        permit(fs::perms::all, {folder_.path, file_, journal_});
        permit(fs::perms::all & ~kWrite, paths);
    };
    tryIn({"a protected file", [&] { protect({file_}); }, kNoError, readOnly, asOrdinaryUser});
    tryIn({"a protected folder", [&] { protect({folder_.path}); }, kNoError, readOnly, asOrdinaryUser});
    const auto stopAndProtect = [&] {
        stopAt(kMiddleOfSecondPage);
        protect({folder_.path, file_, journal_});
    };
    tryIn({"a left journal, all protected", stopAndProtect, left, readOnly, asOrdinaryUser});
}

/// Mode, owner and group of the file's journal if the current user makes it.
struct stat journalOf(const fs::path& file) {
    const auto storage = fileStorage(file.u16string());
    EXPECT_TRUE(storage->createJournal());
    struct stat status {};
    EXPECT_EQ(::stat((file.string() + "-journal-neu").c_str(), &status), 0);
    storage->removeNewJournal();
    return status;
}

TEST_F(FileStorageTest, HasAJournalWithTheSameOwnerAndPermissions) {
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
    // A journal of another user cannot get the file's group, so members of that group have the rights of "others".
    const auto isMadeWith = [this](mode_t mode) { return (journalOf(file_).st_mode & 0777U) == mode; };
    for (const auto& [mode, expected] : {std::pair(0666U, 0666U), {0606U, 0600U}, {0646U, 0644U}}) {
        fs::permissions(file_, static_cast<fs::perms>(mode));
        EXPECT_TRUE(asOrdinaryUser([&, wanted = expected] { return isMadeWith(wanted); })) << mode;
    }
}

#endif

}  // namespace
}  // namespace jet
