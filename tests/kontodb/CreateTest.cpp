#include <fstream>

#include "base/RuntimeError.h"
#include "jet/storage/NewFile.h"
#include "jet/transaction/Database.h"
#include "tests/kontodb/Command.h"
#include "tests/support/FaultyStorage.h"
#include "tools/kontodb/AccountFile.h"

namespace kontodb {
namespace {

class Create : public Command {
protected:
    static bool opens(const Text& file, base::TextView password) {
        try {
            jet::Database::open(jet::openFile(file, jet::OpenMode::Read), file, password);
            return true;
        } catch (const base::RuntimeError&) {
            return false;
        }
    }
};

TEST_F(Create, ProtectsTheFileWithTheToolsPasswordUnlessToldOtherwise) {
    EXPECT_EQ(call({u"create", path(u"eigen.mdb"), u"--accounts", u"3"}).exitCode, kExitSuccess);
    EXPECT_TRUE(opens(path(u"eigen.mdb"), u"HwendorpliqZ"));
    EXPECT_FALSE(opens(path(u"eigen.mdb"), u"hwendorpliqz"));
    EXPECT_EQ(call({u"create", u"--password=Prüf", path(u"anders.mdb")}).exitCode, kExitSuccess);
    EXPECT_TRUE(opens(path(u"anders.mdb"), u"Prüf"));
    EXPECT_FALSE(opens(path(u"anders.mdb"), u"HwendorpliqZ"));
    EXPECT_EQ(call({u"create", path(u"offen.mdb"), u"--password", u""}).exitCode, kExitSuccess);
    EXPECT_TRUE(opens(path(u"offen.mdb"), u""));
    EXPECT_EQ(call({u"create", path(u"gelesen.mdb"), u"--password-file", u"-"}, {}, "aus der Zeile\n").exitCode,
              kExitSuccess);
    EXPECT_TRUE(opens(path(u"gelesen.mdb"), u"aus der Zeile"));
    EXPECT_EQ(call({u"create", path(u"getippt.mdb")}, u"getippt").exitCode, kExitSuccess);
    EXPECT_TRUE(opens(path(u"getippt.mdb"), u"getippt"));
    EXPECT_EQ(call({u"create", path(u"leer.mdb")}, u"").exitCode, kExitSuccess);
    EXPECT_TRUE(opens(path(u"leer.mdb"), u"HwendorpliqZ"));
}

TEST_F(Create, AsksTwiceForThePasswordAndNotInVain) {
    struct Typist final : FakeConsole {
        std::optional<Text> askPassword(base::TextView) override { return Text(++questions, u'x'); }
        std::size_t questions = 0;
    } typist;
    EXPECT_EQ(run(std::vector<Text>{u"create", path(u"neu.mdb")}, typist), kExitError);
    EXPECT_NE(typist.errors.find("Die beiden Eingaben sind verschieden."), std::string::npos) << typist.errors;
    EXPECT_EQ(names().size(), 0U);
    std::ofstream(folder_ / "neu.mdb") << "vorher";
    EXPECT_EQ(run(std::vector<Text>{u"create", path(u"neu.mdb")}, typist), kExitError);
    EXPECT_EQ(typist.questions, 2U);
}

TEST_F(Create, LeavesAnExistingFileAsItIsAndNoHalfFileBehind) {
    std::ofstream(folder_ / "da.mdb") << "vorher";
    EXPECT_TRUE(call({u"create", path(u"da.mdb")}).errors.starts_with("kontodb: 58: "));
    EXPECT_EQ(call({u"create", path(u"neu.mdb"), u"--password", u"einundzwanzig Zeichen"}).exitCode, kExitError);
    EXPECT_TRUE(call({u"create", path(u"fehlt/neu.mdb")}).errors.starts_with("kontodb: -2147467259: "));
    {
        jet::NewFile late(path(u"spät.mdb"));
        std::ofstream(folder_ / u"spät.mdb") << "schneller";
        EXPECT_THROW(late.publish(), base::RuntimeError);
    }
    EXPECT_EQ(contentOf(folder_ / "da.mdb"), "vorher");
    EXPECT_EQ(contentOf(folder_ / u"spät.mdb"), "schneller");
    EXPECT_EQ(names().size(), 2U);
}

TEST_F(Create, MakesNoFileBesideAJournalOfItsName) {
    const auto journal = folder_ / "neu.mdb-journal";
    std::ofstream(journal) << "begonnen";
    EXPECT_NE(call({u"create", path(u"neu.mdb")}).errors.find("neu.mdb-journal' liegt noch da"), std::string::npos);
    EXPECT_EQ(names().size(), 1U);
    // What was left of a making that was cut off does not hinder.
    std::filesystem::remove(journal);
    std::ofstream(folder_ / "neu.mdb-neu-1") << "halb";
    EXPECT_EQ(call({u"create", path(u"neu.mdb")}).exitCode, kExitSuccess);
    EXPECT_TRUE(opens(path(u"neu.mdb"), u"HwendorpliqZ"));
    EXPECT_EQ(names().size(), 2U);
    EXPECT_EQ(contentOf(folder_ / "neu.mdb-neu-1"), "halb");
}

TEST_F(Create, AWrongCallSaysWhatIsWrongAndMakesNothing) {
    const std::vector<std::vector<Text>> calls = {
        {u"create", path(u"a.mdb"), u"b.mdb"},
        {u"create", path(u"a.mdb"), u"--acounts", u"3"},
        {u"create", u"-x"},
        {u"create", path(u"a.mdb"), u"-s"},
        {u"create", path(u"a.mdb"), u"--accounts"},
        {u"create", path(u"a.mdb"), u"--accounts", u"1000001"},
        {u"create", path(u"a.mdb"), u"--accounts", u"-1"},
        {u"create", path(u"a.mdb"), u"--accounts", u"3x"},
        {u"create", path(u"a.mdb"), u"--accounts", u""},
        {u"create", path(u"a.mdb"), u"--seed", u"18446744073709551616"},
        {u"create", path(u"a.mdb"), u"--seed", u"1", u"--seed", u"2"},
    };
    for (const auto& arguments : calls) {
        const Outcome outcome = call(arguments);
        EXPECT_EQ(outcome.exitCode, kExitError);
        EXPECT_TRUE(outcome.errors.starts_with("kontodb: 5: ")) << outcome.errors;
        EXPECT_EQ(outcome.printed, "");
    }
    EXPECT_TRUE(std::filesystem::is_empty(folder_.path));
    EXPECT_EQ(call({u"create", path(u"g.mdb"), u"--seed", u"18446744073709551615"}).exitCode, kExitSuccess);
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
    EXPECT_EQ(sum, 0xB67DB588D84A0F6AU) << "changes only with the files themselves";
    EXPECT_EQ(file, accountFile(200, 42));
    EXPECT_NE(file, accountFile(200, 43));
}

}  // namespace
}  // namespace kontodb
