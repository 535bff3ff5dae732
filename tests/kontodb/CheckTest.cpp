#include <algorithm>
#include <fstream>
#include <functional>

#include "jet/page/PageSource.h"
#include "tests/kontodb/Command.h"
#include "tools/kontodb/Progress.h"

namespace kontodb {
namespace {

class Check : public Command {
protected:
    Check() { call({u"create", file_, u"--accounts", u"300", u"--password", u"geheim"}); }

    Outcome check(const std::vector<Text>& further = {}) const {
        std::vector<Text> arguments{u"check", file_, u"--password", u"geheim"};
        arguments.insert(arguments.end(), further.begin(), further.end());
        return call(arguments);
    }

    void changeByte(std::uint64_t offset) const {
        std::fstream file(std::filesystem::path(file_), std::ios::in | std::ios::out | std::ios::binary);
        file.seekg(static_cast<std::streamoff>(offset));
        const int old = file.get();
        file.seekp(static_cast<std::streamoff>(offset));
        file.put(static_cast<char>(old ^ 1));
    }

    Text file_ = path(u"Prüfling.mdb");
};

TEST_F(Check, PrintsOneLineIfTheFileIsSoundOtherwiseOneForEachFault) {
    const Text journal = file_ + u"-journal";
    const struct {
        std::function<void()> before;
        std::vector<Text> options;
        int exitCode;
        std::vector<std::string> lines;  ///< parts of them, in their order
    } steps[] = {
        {[] {}, {}, kExitSuccess, {"5 Tabellen"}},
        {[&] { changeByte(3 * jet::kPageSize + 16); },
         {},
         kExitSuccess,
         {"1 Hinweise (mit --notes zu sehen)"}},  // a wrong count
        {[] {}, {u"--notes"}, kExitSuccess, {"Hinweis: Tabelle 'MSysACEs'", "5 Tabellen"}},
        {[&] {
             changeByte(3 * jet::kPageSize + 2);  // free bytes of two definitions
             changeByte(4 * jet::kPageSize + 2);
         },
         {},
         kExitFaultsFound,
         {"Fehler: Tabelle 'MSysACEs', Seite 3: ", "Fehler: Tabelle 'MSysQueries', Seite 4: "}},
        {[&] {
             changeByte(3 * jet::kPageSize + 2);
             changeByte(4 * jet::kPageSize + 2);
             std::ofstream(std::filesystem::path(journal)) << "an interrupted writing";
         },
         {},
         kExitFaultsFound,
         {"Prüfling.mdb-journal"}},
    };
    for (const auto& [before, options, exitCode, lines] : steps) {
        before();
        const Outcome outcome = check(options);
        EXPECT_EQ(outcome.exitCode, exitCode) << outcome.printed << outcome.errors;
        EXPECT_EQ(static_cast<std::size_t>(std::count(outcome.printed.begin(), outcome.printed.end(), '\n')),
                  lines.size())
            << outcome.printed;
        std::size_t at = 0;
        for (const std::string& line : lines) {
            at = outcome.printed.find(line, at);
            ASSERT_NE(at, std::string::npos) << line << " in " << outcome.printed;
        }
    }
    EXPECT_TRUE(std::filesystem::exists(journal));

    std::filesystem::resize_file(file_, 100);
    const Outcome outcome = check();
    EXPECT_EQ(outcome.exitCode, kExitError) << "no database";
    EXPECT_NE(outcome.errors, "");
}

TEST(Progress, IsShownOnATerminalAndErasedAtTheEnd) {
    struct : FakeConsole {
        bool isErrorTerminal() override { return true; }
    } console;
    for (const auto& [done, all] : {std::pair(1U, 3U), {0, 0}, {9, 5}})
        Progress(console, "Probe", std::chrono::seconds(0)).at(done, all);
    EXPECT_EQ(console.errors, "\rProbe: 33 %\r           \r\rProbe: 0 %\r          \r\rProbe: 100 %\r            \r");
}

}  // namespace
}  // namespace kontodb
