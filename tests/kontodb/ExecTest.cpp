#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "tests/kontodb/FakeConsole.h"
#include "tools/kontodb/Commands.h"

namespace kontodb {
namespace {

using base::Text;

class Exec : public testing::Test {
protected:
    Exec()
        : folder_(std::filesystem::temp_directory_path() / ("kontodb-exec-" + std::to_string(std::random_device()()))) {
        std::filesystem::create_directory(folder_);
        file_ = (folder_ / "Konten äöü.mdb").u16string();
        EXPECT_EQ(call(u"create", {u"--accounts", u"200"}).exitCode, kExitSuccess);
    }
    // Whatever was written, the file is sound and no journal lies there.
    ~Exec() override {
        EXPECT_EQ(call(u"check").printed.find("Fehler"), std::string::npos);
        const auto files = std::distance(std::filesystem::directory_iterator(folder_), {});
        EXPECT_EQ(files, 1);
        std::filesystem::remove_all(folder_);
    }
    Exec(const Exec&) = delete;
    Exec& operator=(const Exec&) = delete;

    struct Outcome {
        int exitCode;
        std::string printed;
        std::string errors;
    };

    Outcome call(const Text& command, const std::vector<Text>& further = {}) const {
        FakeConsole console;
        std::vector<Text> arguments{command, file_};
        arguments.insert(arguments.end(), further.begin(), further.end());
        arguments.insert(arguments.end(), {u"--password", u"HwendorpliqZ"});
        const int exitCode = run(arguments, console);
        return {exitCode, console.printed, console.errors};
    }
    Outcome exec(const Text& statement) const { return call(u"exec", {statement}); }
    Outcome query(const Text& rest) const { return call(u"query", {u"SELECT * FROM Benutzerkonto " + rest}); }

    std::string content() const {
        std::ifstream file(std::filesystem::path(file_), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    std::filesystem::path folder_;
    Text file_;
};

TEST_F(Exec, PrintsTheCountOfRows) {
    const struct {
        Text statement;
        std::string printed;
    } cases[] = {
        {u"UPDATE Benutzerkonto SET BenKTO_Pass = 'neu' WHERE BenKTO_ID = 17", "1\n"},
        {u"DELETE FROM Benutzerkonto WHERE BenKTO_ID BETWEEN 101 AND 150", "50\n"},
        {u"DELETE FROM Benutzerkonto WHERE BenKTO_ID = 101", "0\n"},
        {u"INSERT INTO Benutzerkonto (BenKTO_Name, BenKTO_R_ProgUpdate) VALUES ('Älfred', 1)", "1\n"},
    };
    for (const auto& [statement, printed] : cases) {
        const Outcome outcome = exec(statement);
        EXPECT_EQ(outcome.exitCode, kExitSuccess);
        EXPECT_EQ(outcome.printed, printed) << base::toUtf8(statement) << outcome.errors;
    }
    EXPECT_NE(query(u"WHERE BenKTO_ID = 17").printed.find("\tneu\t"), std::string::npos);
    EXPECT_NE(query(u"WHERE BenKTO_Name = 'älfred'").printed.find("\n201\tÄlfred\t\\N\t\\N\t-1\n"), std::string::npos);
}

TEST_F(Exec, SaysWhatIsWrongAndChangesNothing) {
    const std::string before = content();
    const struct {
        std::vector<Text> arguments;
        std::string error;
    } cases[] = {
        {{u"DELETE FROM Benutzerkonto WHERE BenKTO_Name = 'O'Neil'"},
         "kontodb: -2147217900: Syntaxfehler (fehlender Operator) in Abfrageausdruck 'BenKTO_Name = 'O'Neil''.\n"},
        {{u"UPDATE Benutzerkonto SET BenKTO_ID = 5"}, "kontodb: -2147"},
        {{u"SELECT * FROM Benutzerkonto"}, "kontodb: 5: exec führt UPDATE, DELETE und INSERT aus"},
        {{}, "kontodb: 5: Es fehlt ein Argument."},
    };
    for (const auto& [arguments, error] : cases) {
        const Outcome outcome = call(u"exec", arguments);
        EXPECT_EQ(outcome.exitCode, kExitError);
        EXPECT_EQ(outcome.printed, "");
        EXPECT_TRUE(outcome.errors.starts_with(error)) << outcome.errors;
    }
    EXPECT_EQ(content(), before);
}

TEST_F(Exec, SeveralAtATimeLoseNothingAndGiveNoNumberTwice) {
    constexpr int kRounds = 15;
    const auto work = [this](const Text& who, int first) {
        for (int i = 0; i < kRounds; ++i) {
            Text insert = u"INSERT INTO Benutzerkonto (BenKTO_Name) VALUES ('";
            insert.append(who).append(base::decimal(i)).append(u"')");
            EXPECT_EQ(exec(insert).printed, "1\n");
            Text update = u"UPDATE Benutzerkonto SET BenKTO_ServerPath = '";
            update.append(who).append(u"' WHERE BenKTO_ID = ").append(base::decimal(first + 2 * i));
            EXPECT_EQ(exec(update).printed, "1\n");
        }
    };
    std::thread other([&] { work(u"Zwei", 2); });
    work(u"Eins", 1);
    other.join();
    for (const Text who : {u"Eins", u"Zwei"}) {
        const std::string changed = query(u"WHERE BenKTO_ServerPath = '" + who + u"'").printed;
        EXPECT_EQ(std::count(changed.begin(), changed.end(), '\n'), 1 + kRounds);
    }
    std::istringstream added(query(u"WHERE BenKTO_ID > 200").printed);
    std::set<std::string> numbers;
    int rows = -1;
    for (std::string line; std::getline(added, line); ++rows)
        numbers.insert(line.substr(0, line.find('\t')));
    EXPECT_EQ(rows, 2 * kRounds);
    EXPECT_EQ(numbers.size(), 1U + 2 * kRounds);
}

}  // namespace
}  // namespace kontodb
