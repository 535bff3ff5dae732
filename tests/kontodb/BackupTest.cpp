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
    Backup() {
        call({u"create", kFile, u"--accounts=500", u"--password="});
        call({u"exec", kFile, u"DELETE FROM Benutzerkonto WHERE BenKTO_ID > 10"});
    }

    static constexpr char16_t kFile[] = u"Konten.mdb", kCopy[] = u"Sicherung äöü.mdb";
};

TEST_F(Backup, CopiesWithTheSamePermissionsWhileOthersRead) {
    using std::filesystem::perms;
    const perms mode = perms::owner_read | perms::owner_write | perms::group_read;
    std::filesystem::permissions(kFile, mode);
    const std::string before = contentOf(kFile);
    jet::Database other = jet::Database::open(jet::fileStorage(kFile), {});
    const auto reading = other.beginRead();
    for (const auto& [command, printed] : {std::pair{"backup", "gesichert und geprüft"},
                                           std::pair{"compact", "84 KB statt 172 KB, verglichen und geprüft"}}) {
        std::filesystem::remove(kCopy);
        expect(std::string("\n$ ") + command + " Konten.mdb \"Sicherung äöü.mdb\"\nSicherung äöü.mdb: " + printed +
               "\n");
        EXPECT_EQ(contentOf(kCopy) == before, command == std::string("backup"));
        const Text all = u"SELECT * FROM Benutzerkonto";
        EXPECT_EQ(call({u"query", kCopy, all}).printed, call({u"query", kFile, all}).printed);
        EXPECT_TRUE(contentOf(kFile) == before);
        EXPECT_EQ(names().size(), 2U);
#ifndef _WIN32
        EXPECT_EQ(std::filesystem::status(kCopy).permissions(), mode);
#endif
    }
}

TEST_F(Backup, NeverOverwritesAFileAndLeavesNoPartOfOne) {
    expect(R"(
$ create geheim.mdb
geheim.mdb: 0 Konten
$ create begonnen.mdb --password=
begonnen.mdb: 0 Konten
)");
    write("begonnen.mdb-journal", "an interrupted writing");
    write("da.mdb", "schon da");
    for (const std::string command : {"\n$ backup ", "\n$ compact ", "\n$ repair "}) {
        expect(command + "geheim.mdb neu.mdb --password=falsch\n! kontodb: -2147217843: …\n");
        expect(command + "begonnen.mdb neu.mdb\n! kontodb: -2147467259: …hinterlassen…\n");
        expect(command + "Konten.mdb da.mdb\n! kontodb: 58: Die Datei 'da.mdb' existiert bereits.\n");
    }
}

#ifndef _WIN32
TEST_F(Backup, CopiesOnlyUnderTheSharedLock) {
    struct WriterAfterTheHint final : FakeConsole {
        void printError(std::string_view utf8) override {
            isLocked = isLocked || io->lock(jet::LockKind::Exclusive, {});
            FakeConsole::printError(utf8);
        }
        std::unique_ptr<jet::PageIo> io = jet::openFile(kFile, jet::OpenMode::ReadWrite);
        bool isLocked = false;
    } console;
    // A lock file of the original engine that cannot be opened counts as in use.
    std::filesystem::create_symlink("Konten.ldb", "Konten.ldb");
    EXPECT_EQ(run(std::vector<Text>{u"backup", kFile, kCopy}, console), kExitError);
    EXPECT_TRUE(console.errors.starts_with("Hinweis: Die Datei ist auch in Access geöffnet.")) << console.errors;
    EXPECT_NE(console.errors.find("bereits benutzt"), std::string::npos) << console.errors;
    EXPECT_FALSE(std::filesystem::exists(kCopy));
}
#endif

TEST_F(Backup, CopiesAFileWithFaultsButDoesNotCompactIt) {
    std::string bytes = contentOf(kFile);
    bytes[3 * jet::kPageSize + 2] ^= 1;  // free bytes of a definition
    write("Definition.mdb", bytes);
    expect(R"(
$ backup Definition.mdb Ziel.mdb
Fehler: 'Ziel.mdb' ist eine genaue Kopie, und die Datei hat 1 Fehler. Welche, zeigt: kontodb check DATEI
(exit code 1)
)");
    EXPECT_TRUE(contentOf("Ziel.mdb") == bytes);

    // Keys in the wrong order stay so in the new file, where the check finds them.
    bytes = contentOf(kFile);
    std::size_t leaf = 16 * jet::kPageSize;
    while (bytes[leaf] != 4)
        leaf += jet::kPageSize;
    ++bytes[leaf + 480 + 4];  // the last byte of the first number
    write("Index.mdb", bytes);
    expect("\n$ compact Index.mdb Neu.mdb\n! kontodb: …wird nicht verkleinert…\n");
}

}  // namespace
}  // namespace kontodb
