#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

#include "jet/PageSource.h"
#include "tests/kontodb/FakeConsole.h"
#include "tools/kontodb/Commands.h"

namespace kontodb {
namespace {

using base::Text;

class Check : public testing::Test {
protected:
    Check()
        : folder_(std::filesystem::temp_directory_path() /
                  ("kontodb-check-" + std::to_string(std::random_device()()))) {
        std::filesystem::create_directory(folder_);
        file_ = folder_ / u"Prüfling.mdb";
        run(std::vector<Text>{u"create", file_.u16string(), u"--accounts", u"300", u"--password", u"geheim"}, console_);
    }
    ~Check() override { std::filesystem::remove_all(folder_); }
    Check(const Check&) = delete;
    Check& operator=(const Check&) = delete;

    int check(std::vector<Text> further = {}) {
        console_ = {};
        std::vector<Text> arguments{u"check", file_.u16string(), u"--password", u"geheim"};
        arguments.insert(arguments.end(), further.begin(), further.end());
        return run(arguments, console_);
    }

    void changeByte(std::uint64_t offset) {
        std::fstream file(file_, std::ios::in | std::ios::out | std::ios::binary);
        file.seekg(static_cast<std::streamoff>(offset));
        const int old = file.get();
        file.seekp(static_cast<std::streamoff>(offset));
        file.put(static_cast<char>(old ^ 1));
    }

    std::size_t printedLines() const {
        return static_cast<std::size_t>(std::count(console_.printed.begin(), console_.printed.end(), '\n'));
    }

    std::filesystem::path folder_;
    std::filesystem::path file_;
    FakeConsole console_;
};

TEST_F(Check, SaysInOneLineThatAFileIsSound) {
    EXPECT_EQ(check(), kExitSuccess) << console_.printed << console_.errors;
    EXPECT_EQ(printedLines(), 1U) << console_.printed;
    EXPECT_NE(console_.printed.find("5 Tabellen"), std::string::npos) << console_.printed;
}

TEST_F(Check, NamesAllFaultsInOneRun) {
    changeByte(3 * jet::kPageSize + 2);  // free bytes of two definitions
    changeByte(4 * jet::kPageSize + 2);
    EXPECT_EQ(check(), kExitFaultsFound);
    EXPECT_EQ(printedLines(), 2U) << console_.printed;
    EXPECT_TRUE(console_.printed.starts_with("Fehler: Tabelle 'MSysACEs', Seite 3: ")) << console_.printed;
    EXPECT_NE(console_.printed.find("\nFehler: Tabelle 'MSysQueries', Seite 4: "), std::string::npos)
        << console_.printed;
}

TEST_F(Check, ShowsNotesWhenAskedTo) {
    changeByte(3 * jet::kPageSize + 16);  // row count of a system table
    EXPECT_EQ(check(), kExitSuccess);
    EXPECT_EQ(printedLines(), 1U) << console_.printed;
    EXPECT_EQ(check({u"--notes"}), kExitSuccess);
    EXPECT_EQ(printedLines(), 2U) << console_.printed;
    EXPECT_TRUE(console_.printed.starts_with("Hinweis: Tabelle 'MSysACEs'")) << console_.printed;
}

TEST_F(Check, ReportsAJournalAndLeavesItThere) {
    const std::filesystem::path journal = folder_ / u"Prüfling.mdb-journal";
    std::ofstream(journal) << "an interrupted writing";
    EXPECT_EQ(check(), kExitFaultsFound);
    EXPECT_NE(console_.printed.find("Prüfling.mdb-journal"), std::string::npos) << console_.printed;
    EXPECT_EQ(printedLines(), 1U);
    EXPECT_TRUE(std::filesystem::exists(journal));
    console_ = {};
    const std::vector<Text> query{u"query", file_.u16string(), u"SELECT * FROM Benutzerkonto", u"--password",
                                  u"geheim"};
    EXPECT_EQ(run(query, console_), kExitError);
    EXPECT_NE(console_.errors.find("Prüfling.mdb-journal"), std::string::npos) << console_.errors;
}

TEST_F(Check, RefusesWhatIsNoDatabase) {
    std::filesystem::resize_file(file_, 100);
    EXPECT_EQ(check(), kExitError);
    EXPECT_NE(console_.errors, "");
}

}  // namespace
}  // namespace kontodb
