#include "tests/kontodb/Command.h"

namespace kontodb {
namespace {

class Exec : public Command {
protected:
    Exec() { EXPECT_EQ(call(u"create", {u"--accounts", u"200"}).exitCode, kExitSuccess); }
    // Whatever was written, the file is sound and no journal lies there.
    ~Exec() override {
        EXPECT_EQ(call(u"check").printed.find("Fehler"), std::string::npos);
        EXPECT_EQ(names().size(), 1U);
    }
    Exec(const Exec&) = delete;
    Exec& operator=(const Exec&) = delete;

    Outcome call(const Text& command, const std::vector<Text>& further = {}) const {
        std::vector<Text> arguments{command, file_};
        arguments.insert(arguments.end(), further.begin(), further.end());
        arguments.insert(arguments.end(), {u"--password", u"HwendorpliqZ"});
        return Command::call(arguments);
    }
    Outcome exec(const Text& statement) const { return call(u"exec", {statement}); }
    Outcome query(const Text& rest) const { return call(u"query", {u"SELECT * FROM Benutzerkonto " + rest}); }

    std::string content() const { return contentOf(file_); }

    Text file_ = path(u"Konten äöü.mdb");
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
    EXPECT_EQ(call(u"query", {u"SELECT benkto_pass FROM Benutzerkonto WHERE BenKTO_ID = 17"}).printed,
              "BenKTO_Pass\nneu\n");
    EXPECT_NE(query(u"WHERE BenKTO_Name = 'älfred'").printed.find("\n201\tÄlfred\t\\N\t-1\n"), std::string::npos);
}

TEST_F(Exec, LeavesPasswordsOutUnlessTheirColumnIsNamed) {
    const std::string hint = "Hinweis: Die Spalte BenKTO_Pass fehlt bei SELECT *;";
    for (const auto& [flag, columns] :
         {std::pair{u"--csv", "BenKTO_ID,BenKTO_Name,BenKTO_ServerPath,"}, std::pair{u"--json", "{\"BenKTO_ID\": "}}) {
        const Outcome all = call(u"query", {u"SELECT TOP 1 * FROM [benutzerkonto] ORDER BY BenKTO_Pass", flag});
        EXPECT_TRUE(all.printed.starts_with(columns)) << all.printed;
        EXPECT_EQ(all.printed.find("BenKTO_Pass"), std::string::npos);
        EXPECT_TRUE(all.errors.starts_with(hint)) << all.errors;
    }
    const Outcome named = call(u"query", {u"SELECT BenKTO_Pass FROM Benutzerkonto WHERE BenKTO_ID = 1"});
    EXPECT_EQ(named.printed.size(), 12 + 64 + 1U) << named.printed;
    EXPECT_EQ(named.errors, "");
    EXPECT_EQ(call(u"query", {u"SELECT COUNT(*) FROM Benutzerkonto"}).printed, "Anzahl\n200\n");
}

TEST_F(Exec, SaysThatTheChangeWasMadeIfItCannotPrintTheCount) {
    FakeConsole console;
    console.isFull = true;
    const Text password = u"--password=HwendorpliqZ";
    const Text statement = u"DELETE FROM Benutzerkonto WHERE BenKTO_ID < 8";
    EXPECT_EQ(run(std::vector<Text>{u"exec", file_, statement, password}, console), kExitError);
    EXPECT_TRUE(console.errors.starts_with("kontodb: 57: Voll. Die Anweisung ist trotzdem ausgef")) << console.errors;
    EXPECT_TRUE(console.errors.ends_with("Zeilen: 7.\n")) << console.errors;
    EXPECT_EQ(exec(statement).printed, "0\n");
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
        {{}, "kontodb: 5: Es fehlt das Argument ANWEISUNG."},
    };
    for (const auto& [arguments, error] : cases) {
        const Outcome outcome = call(u"exec", arguments);
        EXPECT_EQ(outcome.exitCode, kExitError);
        EXPECT_EQ(outcome.printed, "");
        EXPECT_TRUE(outcome.errors.starts_with(error)) << outcome.errors;
    }
    EXPECT_EQ(content(), before);
}

}  // namespace
}  // namespace kontodb
