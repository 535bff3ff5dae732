#include "base/RuntimeError.h"
#include "jet/storage/NewFile.h"
#include "tests/kontodb/Command.h"
#include "tests/support/FaultyStorage.h"
#include "tools/kontodb/AccountFile.h"

namespace kontodb {
namespace {

using Create = Command;

TEST_F(Create, TakesThePasswordInEveryWayInWhichOtherCommandsTakeIt) {
    write("kennwort.txt", "\xEF\xBB\xBFPrüf wort\r\nzweite Zeile");
    const std::string typed = "? Prüf wort\n";
    const std::pair<std::string, std::string> ways[] = {{" --password \"Prüf wort\"\n", ""},
                                                        {" --password-file kennwort.txt\n", ""},
                                                        {" --password-file -\n", "< Prüf wort\n< zweite Zeile\n"},
                                                        {" --password-file -\n", typed},
                                                        {"\n", typed}};
    for (const auto& [making, dialog] : ways) {
        const std::string again = dialog == typed ? typed : "";
        expect(std::string("\n$ create a.mdb").append(making).append(dialog).append(again).append("a.mdb: 0 Konten\n"));
        for (const auto& [opening, answer] : ways)
            expect(std::string("\n$ schema a.mdb").append(opening).append(answer).append("Tabelle Benutzerkonto\n…"));
        std::filesystem::remove("a.mdb");
    }
}

TEST_F(Create, RefusesAnyOtherPassword) {
    expect(R"(
$ create eigen.mdb --accounts 3
eigen.mdb: 3 Konten
$ create auch.mdb --accounts 1
?
auch.mdb: 1 Konto
$ create offen.mdb --password=
offen.mdb: 0 Konten
$ tables eigen.mdb --password HwendorpliqZ
…
$ tables auch.mdb --password HwendorpliqZ
…
$ tables offen.mdb --password irgendeins
…
$ tables eigen.mdb
? falsch
! kontodb: -2147217843: Kein zulässiges Kennwort.
$ tables eigen.mdb --password-file -
<
! kontodb: -2147217843: Kein zulässiges Kennwort.
$ tables eigen.mdb --password-file "gibt es nicht"
! kontodb: -2147467259: Datei 'gibt es nicht' nicht gefunden.
$ create neu.mdb
? x
? xx
! kontodb: -2147467259: Die beiden Eingaben sind verschieden. Es ist keine Datei entstanden.
$ create neu.mdb --password "einundzwanzig Zeichen"
! kontodb: …
)");
    for (const char* option : {"", " --password hwendorpliqz", " --password="})
        expect("\n$ tables eigen.mdb" + std::string(option) + "\n! kontodb: -2147217843: …\n");
}

TEST_F(Create, LeavesExistingFilesUnchangedAndNoHalfWrittenOne) {
    write("da.mdb", "vorher");
    write("mit.mdb-journal", "begonnen");
    write("neu.mdb-neu-1", "halb");
    // If the command must fail anyway, it asks for no password.
    expect(R"(
$ create da.mdb
! kontodb: 58: Die Datei 'da.mdb' existiert bereits.
$ create mit.mdb
! kontodb: …mit.mdb-journal' liegt noch da…
$ create fehlt/neu.mdb
! kontodb: -2147467259: …
$ create neu.mdb
neu.mdb: 0 Konten
$ tables neu.mdb --password HwendorpliqZ
…
)");
    jet::NewFile late(u"spät.mdb");
    write(u"spät.mdb", "schneller");
    EXPECT_THROW(late.publish(), base::RuntimeError);
    EXPECT_EQ(contentOf(u"spät.mdb"), "schneller");
    EXPECT_EQ(contentOf("neu.mdb-neu-1"), "halb");
}

base::Bytes accountFile(std::uint32_t accounts, std::uint64_t seed) {
    const test::Machine machine;
    writeAccountFile(*machine.io(), u"", accounts, seed);
    return machine.file();
}

TEST(InventedAccounts, TheSameSeedGivesTheSameBytesEverywhere) {
    const base::Bytes file = accountFile(200, 42);
    std::uint64_t sum = 0xCBF29CE484222325U;  // FNV-1a
    for (const std::uint8_t byte : file)
        sum = (sum ^ byte) * 0x100000001B3U;
    EXPECT_EQ(sum, 0xB67DB588D84A0F6AU) << "may change only if new files get other contents";
    EXPECT_EQ(file, accountFile(200, 42));
    EXPECT_NE(file, accountFile(200, 43));
}

}  // namespace
}  // namespace kontodb
