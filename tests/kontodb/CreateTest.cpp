#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "base/RuntimeError.h"
#include "jet/Database.h"
#include "jet/IndexCursor.h"
#include "jet/MemoryIo.h"
#include "jet/SortKey.h"
#include "tests/kontodb/FakeConsole.h"
#include "tools/kontodb/AccountFile.h"
#include "tools/kontodb/Commands.h"

namespace kontodb {
namespace {

using base::Text;

class Create : public ::testing::Test {
protected:
    // A folder of its own, since the same tests may run elsewhere at the same time.
    Create()
        : folder_(std::filesystem::temp_directory_path() / ("kontodb-test-" + std::to_string(std::random_device()()))) {
        std::filesystem::create_directory(folder_);
    }
    ~Create() override { std::filesystem::remove_all(folder_); }
    Create(const Create&) = delete;
    Create& operator=(const Create&) = delete;

    Text path(const char16_t* name) const { return (folder_ / name).u16string(); }

    int call(std::vector<Text> arguments) {
        console_ = {};
        return run(arguments, console_);
    }

    static bool opens(const Text& file, base::TextView password) {
        try {
            jet::Database::open(jet::openFile(file, jet::OpenMode::Read), file, password);
            return true;
        } catch (const base::RuntimeError&) {
            return false;
        }
    }

    std::filesystem::path folder_;
    FakeConsole console_;
};

TEST_F(Create, ProtectsTheFileWithTheToolsPasswordUnlessToldOtherwise) {
    EXPECT_EQ(call({u"create", path(u"eigen.mdb"), u"--accounts", u"3"}), kExitSuccess) << console_.errors;
    EXPECT_TRUE(opens(path(u"eigen.mdb"), u"HwendorpliqZ"));
    EXPECT_FALSE(opens(path(u"eigen.mdb"), u"hwendorpliqz"));
    EXPECT_EQ(call({u"create", u"--password=Prüf", path(u"anders.mdb")}), kExitSuccess);
    EXPECT_TRUE(opens(path(u"anders.mdb"), u"Prüf"));
    EXPECT_FALSE(opens(path(u"anders.mdb"), u"HwendorpliqZ"));
    EXPECT_EQ(call({u"create", path(u"offen.mdb"), u"--password", u""}), kExitSuccess);
    EXPECT_TRUE(opens(path(u"offen.mdb"), u""));
}

TEST_F(Create, LeavesAnExistingFileAsItIs) {
    std::ofstream(folder_ / "da.mdb") << "vorher";
    EXPECT_EQ(call({u"create", path(u"da.mdb")}), kExitError);
    EXPECT_EQ(console_.errors.rfind("kontodb: 58: ", 0), 0U) << console_.errors;
    std::string content;
    std::ifstream(folder_ / "da.mdb") >> content;
    EXPECT_EQ(content, "vorher");
}

TEST_F(Create, LeavesNoHalfFileBehind) {
    EXPECT_EQ(call({u"create", path(u"neu.mdb"), u"--password", u"einundzwanzig Zeichen"}), kExitError);
    EXPECT_FALSE(std::filesystem::exists(folder_ / "neu.mdb"));
    EXPECT_EQ(call({u"create", path(u"fehlt/neu.mdb")}), kExitError);
    EXPECT_EQ(console_.errors.rfind("kontodb: -2147467259: ", 0), 0U) << console_.errors;
}

TEST_F(Create, AWrongCallSaysWhatIsWrongAndMakesNothing) {
    const std::vector<std::vector<Text>> calls = {
        {},
        {u"verbessern"},
        {u"create"},
        {u"create", path(u"a.mdb"), u"b.mdb"},
        {u"create", path(u"a.mdb"), u"--acounts", u"3"},
        {u"create", path(u"a.mdb"), u"--accounts"},
        {u"create", path(u"a.mdb"), u"--accounts", u"1000001"},
        {u"create", path(u"a.mdb"), u"--accounts", u"-1"},
        {u"create", path(u"a.mdb"), u"--accounts", u"3x"},
        {u"create", path(u"a.mdb"), u"--accounts", u""},
        {u"create", path(u"a.mdb"), u"--seed", u"18446744073709551616"},
        {u"create", path(u"a.mdb"), u"--seed", u"1", u"--seed", u"2"},
    };
    for (const auto& arguments : calls) {
        EXPECT_EQ(call(arguments), kExitError);
        EXPECT_EQ(console_.errors.rfind("kontodb: 5: ", 0), 0U) << console_.errors;
        EXPECT_TRUE(console_.printed.empty());
    }
    EXPECT_TRUE(std::filesystem::is_empty(folder_));
    EXPECT_EQ(call({u"--help"}), kExitSuccess);
    EXPECT_EQ(call({u"create", u"--help"}), kExitSuccess);
    EXPECT_NE(console_.printed.find("kontodb create DATEI"), std::string::npos);
    EXPECT_EQ(call({u"create", path(u"g.mdb"), u"--seed", u"18446744073709551615"}), kExitSuccess);
}

base::Bytes accountFile(std::uint32_t accounts, std::uint64_t seed) {
    jet::MemoryIo io;
    writeAccountFile(io, u"", accounts, seed);
    return io.bytes();
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

TEST(InventedAccounts, CoverWhatRealAccountsHave) {
    auto database = jet::Database::open(std::make_unique<jet::MemoryIo>(accountFile(3000, 7)), u"x.mdb", u"");
    auto operation = database.beginRead();
    const auto table = jet::openTable(operation, u"Benutzerkonto");
    ASSERT_TRUE(table);
    std::set<base::Bytes> names;
    std::set<Text> passwords;
    int initial = 0, trailing = 0, plain = 0, none = 0, allowed = 0, umlauts = 0, hyphens = 0, eszetts = 0;
    const auto& definition = table->definition();
    for (jet::RowCursor cursor(*table); cursor.next();) {
        const jet::RowView& row = cursor.row().view;
        const auto value = [&](const char16_t* name) { return table->value(row, *definition.column(name)); };
        const Text name = std::get<Text>(value(u"BenKTO_Name"));
        const Text password = std::get<Text>(value(u"BenKTO_Pass"));
        EXPECT_TRUE(names.insert(jet::sortKey(name)).second) << base::toUtf8(name);
        EXPECT_EQ(password.size(), 64U);
        EXPECT_EQ(password.find_first_not_of(u"0123456789abcdef"), Text::npos);
        if (password == u"a4c123b1612dd272d1371c17149d439536b3216fdaeeb975729fae923d5a4fd1")
            ++initial;
        else
            EXPECT_TRUE(passwords.insert(password).second);
        const base::Value path = value(u"BenKTO_ServerPath");
        if (base::isNull(path))
            ++none;
        else
            ++(std::get<Text>(path).ends_with(u'\\') ? trailing : plain);
        allowed += std::get<bool>(value(u"BenKTO_R_ProgUpdate")) ? 1 : 0;
        umlauts += name.find_first_of(u"äöüÄÖÜ") != Text::npos ? 1 : 0;
        eszetts += name.find(u'ß') != Text::npos ? 1 : 0;
        hyphens += name.find(u'-') != Text::npos ? 1 : 0;
    }
    EXPECT_EQ(names.size(), 3000U);
    for (const int count : {initial, trailing, plain, none, allowed, 3000 - allowed, umlauts, eszetts, hyphens})
        EXPECT_GT(count, 50);
}

}  // namespace
}  // namespace kontodb
