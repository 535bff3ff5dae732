#include <memory>

#include "jet/page/PageSource.h"
#include "jet/storage/PageIo.h"
#include "jet/storage/Storage.h"
#include "jet/transaction/Database.h"
#include "tests/kontodb/Command.h"

namespace kontodb {
namespace {

class Backup : public Command {
protected:
    Backup() { call({u"create", file_, u"--accounts", u"500", u"--password", u"geheim"}); }

    Outcome backup(const Text& password = u"geheim", const Text& command = u"backup") const {
        return call({command, file_, copy_, u"--password", password});
    }

    Text file_ = path(u"Konten.mdb");
    Text copy_ = path(u"Sicherung äöü.mdb");
};

TEST_F(Backup, CopiesEveryByteForTheSameUsersWhileOthersRead) {
    using std::filesystem::perms;
    const perms mode = perms::owner_read | perms::owner_write | perms::group_read;
    std::filesystem::permissions(file_, mode);
    jet::Database other = jet::Database::open(jet::fileStorage(file_), u"geheim");
    const auto reading = other.beginRead();
    const Outcome outcome = backup();
    EXPECT_EQ(outcome.exitCode, kExitSuccess) << outcome.errors;
    EXPECT_TRUE(outcome.printed.ends_with(": gesichert und geprüft\n")) << outcome.printed;
    EXPECT_TRUE(contentOf(copy_) == contentOf(file_));
    EXPECT_EQ(names().size(), 2U);
#ifndef _WIN32
    EXPECT_EQ(std::filesystem::status(copy_).permissions(), mode);
#endif
}

TEST_F(Backup, CompactsForTheSameUsersWhileOthersRead) {
    const Text statement = u"DELETE FROM Benutzerkonto WHERE BenKTO_ID > 10";
    ASSERT_EQ(call({u"exec", file_, statement, u"--password=geheim"}).exitCode, kExitSuccess);
    const std::string before = contentOf(file_);
    const auto mode = std::filesystem::perms::owner_read | std::filesystem::perms::owner_write;
    std::filesystem::permissions(file_, mode);
    jet::Database other = jet::Database::open(jet::fileStorage(file_), u"geheim");
    const auto reading = other.beginRead();
    const Outcome outcome = backup(u"geheim", u"compact");
    EXPECT_EQ(outcome.exitCode, kExitSuccess) << outcome.errors;
    EXPECT_TRUE(outcome.printed.ends_with("Sicherung äöü.mdb: 84 KB statt 172 KB, verglichen und geprüft\n"))
        << outcome.printed;
    EXPECT_TRUE(contentOf(file_) == before);
    EXPECT_EQ(call({u"query", copy_, u"SELECT * FROM Benutzerkonto", u"--password=geheim"}).printed,
              call({u"query", file_, u"SELECT * FROM Benutzerkonto", u"--password=geheim"}).printed);
#ifndef _WIN32
    EXPECT_EQ(std::filesystem::status(copy_).permissions(), mode);
#endif
}

TEST_F(Backup, NeverWritesOverAFileNorLeavesAPart) {
    for (const char16_t* command : {u"backup", u"compact"}) {
        EXPECT_EQ(backup(u"falsch", command).exitCode, kExitError);
        std::ofstream(std::filesystem::path(file_ + u"-journal")) << "an interrupted writing";
        EXPECT_EQ(backup(u"geheim", command).exitCode, kExitError);
        std::filesystem::remove(file_ + u"-journal");
        EXPECT_EQ(names().size(), 1U);

        std::ofstream(std::filesystem::path(copy_)) << "schon da";
        EXPECT_EQ(backup(u"geheim", command).exitCode, kExitError);
        EXPECT_EQ(contentOf(copy_), "schon da");
        EXPECT_EQ(names().size(), 2U);
        std::filesystem::remove(copy_);
    }
}

#ifndef _WIN32
TEST_F(Backup, CopiesOnlyUnderTheSharedLock) {
    struct WriterAfterTheHint final : FakeConsole {
        void printError(std::string_view utf8) override {
            isLocked = isLocked || io->lock(jet::LockKind::Exclusive, {});
            FakeConsole::printError(utf8);
        }
        std::unique_ptr<jet::PageIo> io;
        bool isLocked = false;
    } console;
    console.io = jet::openFile(file_, jet::OpenMode::ReadWrite);
    // A lock file of the original engine that cannot be opened counts as in use.
    std::filesystem::create_symlink("Konten.ldb", folder_ / "Konten.ldb");
    EXPECT_EQ(run(std::vector<Text>{u"backup", file_, copy_, u"--password=geheim"}, console), kExitError);
    EXPECT_TRUE(console.errors.starts_with("Hinweis: Die Datei ist auch in Access geöffnet.")) << console.errors;
    EXPECT_NE(console.errors.find("bereits benutzt"), std::string::npos) << console.errors;
    EXPECT_FALSE(std::filesystem::exists(copy_));
}
#endif

TEST_F(Backup, SaysThatTheCopyHasTheFaultsOfTheFile) {
    std::string bytes = contentOf(file_);
    bytes[3 * jet::kPageSize + 2] = static_cast<char>(bytes[3 * jet::kPageSize + 2] ^ 1);  // free bytes of a definition
    std::ofstream(std::filesystem::path(file_), std::ios::binary) << bytes;
    const Outcome outcome = backup();
    EXPECT_EQ(outcome.exitCode, kExitFaultsFound);
    EXPECT_NE(outcome.printed.find("hat 1 Fehler"), std::string::npos) << outcome.printed;
    EXPECT_TRUE(contentOf(copy_) == bytes);
}

/// An index whose keys are in the wrong order keeps it in the copy, where the check finds it.
TEST_F(Backup, CompactMakesNoFileWithFaults) {
    std::string bytes = contentOf(file_);
    const auto at = [&](jet::PageNumber page) { return page * jet::kPageSize; };
    jet::PageNumber leaf = 16;
    while (bytes[at(leaf)] != 4)
        ++leaf;
    ++bytes[at(leaf) + 480 + 4];  // the last byte of the first number
    std::ofstream(std::filesystem::path(file_), std::ios::binary) << bytes;
    const Outcome outcome = backup(u"geheim", u"compact");
    EXPECT_EQ(outcome.exitCode, kExitError);
    EXPECT_NE(outcome.errors.find("wird nicht verkleinert"), std::string::npos) << outcome.errors;
    EXPECT_EQ(names().size(), 1U);
}

}  // namespace
}  // namespace kontodb
