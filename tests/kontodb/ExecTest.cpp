#include <random>

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
        {{u"UPDATE Benutzerkonto SET BenKTO_ID = 5", u"--all"}, "kontodb: -2147"},
        {{u"UPDATE Benutzerkonto SET BenKTO_Name = 'x'"},
         "kontodb: 5: UPDATE ohne WHERE ändert alle Zeilen der Tabelle 'Benutzerkonto'. Ist das gemeint, geben Sie "
         "--all"},
        {{u"DELETE * FROM Benutzerkonto;", u"--dry-run"}, "kontodb: 5: DELETE ohne WHERE löscht alle Zeilen"},
        {{u"DELETE FROM Benutzerkonto WHERE BenKTO_ID = 1; DELETE FROM Benutzerkonto"},
         "kontodb: -2147217900: Nach dem Ende der SQL-Anweisung wurden Zeichen gefunden.\n"
         "  DELETE FROM Benutzerkonto WHERE BenKTO_ID = 1; DELETE FROM Benutzerkonto\n"
         "                                                 ^\n"
         "Mehrere Anweisungen führt aus: kontodb exec DATEI --file"},
        {{u"DELETE", u"--file", u"x"}, "kontodb: 5: Die Anweisung steht entweder"},
        {{u"--file", u"gibt es nicht"}, "kontodb: -2147467259: Datei 'gibt es nicht' nicht gefunden.\n"},
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

TEST_F(Exec, ChangesTheSameInOneTransactionAsOneByOne) {
    std::mt19937 random(20261125);
    const auto below = [&](std::size_t limit) { return base::decimal(static_cast<std::int64_t>(random() % limit)); };
    const Text other = path(u"andere.mdb"), password = u"--password=HwendorpliqZ";
    std::filesystem::copy(std::filesystem::path(file_), std::filesystem::path(other));
    Text script;
    std::string counts;
    for (int i = 0; i < 60; ++i) {
        const Text path = u"'X:\\" + Text(random() % 200, u'ä') + below(5) + u"'";
        const Text condition = u" WHERE BenKTO_ID " + Text(random() % 3 == 0 ? u"> 2" : u"= ") + below(220) +
                               (random() % 2 == 0 ? u" OR BenKTO_ServerPath LIKE '%ä" + below(5) + u"'" : u"");
        Text insert = u"INSERT INTO Benutzerkonto (BenKTO_Name, BenKTO_ServerPath) VALUES ('Neu ";
        insert.append(below(30)).append(u"', ").append(path).append(u")");
        Text update = u"UPDATE Benutzerkonto SET BenKTO_ServerPath = ";
        update.append(path).append(condition);
        const Text statements[] = {insert, update, u"DELETE FROM BENUTZERKONTO" + condition};
        const Text& statement = statements[random() % 3];
        counts += exec(statement).printed;
        script.append(statement).append(u";\n");
    }
    EXPECT_EQ(Command::call({u"exec", other, u"-", password}, {}, base::toUtf8(script)).printed, counts);
    const Text all = u"SELECT BenKTO_ID, BenKTO_Name, BenKTO_ServerPath FROM Benutzerkonto ORDER BY BenKTO_ID";
    EXPECT_EQ(Command::call({u"query", other, all, password}).printed, call(u"query", {all}).printed);
    EXPECT_EQ(Command::call({u"check", other, password}).exitCode, kExitSuccess);
    std::filesystem::remove(std::filesystem::path(other));
}

TEST_F(Exec, CarriesOutAllStatementsOfAScriptOrNone) {
    const Text script = path(u"a.sql");
    const auto run = [&](const std::string& text, const std::vector<Text>& further = {}) {
        std::ofstream(std::filesystem::path(script), std::ios::binary) << text;
        std::vector<Text> arguments{u"--file", script};
        arguments.insert(arguments.end(), further.begin(), further.end());
        Outcome fromFile = call(u"exec", arguments);
        std::filesystem::remove(script);
        return fromFile;
    };
    const std::string before = content();
    const std::string good =
        "\xEF\xBB\xBF-- Anlegen; und 'löschen\r\n"
        "INSERT INTO Benutzerkonto (BenKTO_Name) VALUES ('ä;\r\n -- b');\r\n"
        "UPDATE Benutzerkonto SET [BenKTO_Pass] = 'neu' WHERE BenKTO_ID >= 200 ;;\n"
        "DELETE FROM Benutzerkonto WHERE BenKTO_Pass = 'neu' AND BenKTO_ID < 201;\r\n";
    const struct {
        std::string further;
        std::string errors;
    } broken[] = {
        {"DELETE FROM Benutzerkonto\nWHERE BenKTO_Name = 'O'Neil';\nDELETE FROM Benutzerkonto WHERE BenKTO_ID = 1;",
         "kontodb: -2147217900: Syntaxfehler (fehlender Operator) in Abfrageausdruck 'BenKTO_Name = 'O'Neil';'.\n"
         "Anweisung 4, Zeile 7:\n"
         "  WHERE BenKTO_Name = 'O'Neil';\n"
         "                         ^\n"
         "Ein Text steht in '...'; ein Apostroph darin wird doppelt geschrieben: 'O''Neil'.\n"
         "Keine der Anweisungen ist ausgeführt.\n"},
        {"UPDATE Benutzerkonto SET BenKTO_Nam = 'x' WHERE BenKTO_ID = 3",
         "kontodb: -2147217904: Für mindestens einen erforderlichen Parameter wurde kein Wert angegeben.\n"
         "Anweisung 4, Zeile 6:\n"
         "  UPDATE Benutzerkonto SET BenKTO_Nam = 'x' WHERE BenKTO_ID = 3\n"
         "                           ^\n"
         "Die Tabelle 'Benutzerkonto' hat keine Spalte 'BenKTO_Nam'. Meinten Sie 'BenKTO_Name'?\n"
         "Keine der Anweisungen ist ausgeführt.\n"},
        {"INSERT INTO Benutzerkonto (BenKTO_ID) VALUES (7)",
         "kontodb: -2147467259: Die von Ihnen vorgenommenen Änderungen an der Tabelle konnten nicht vorgenommen "
         "werden"},
        {"DELETE FROM Benutzerkonto", "kontodb: 5: Anweisung 4: DELETE ohne WHERE"},
        {"SELECT * FROM Benutzerkonto", "kontodb: 5: Anweisung 4: exec führt"},
        {"-- ä als \xE4", "kontodb: 5: Die Datei '"},
    };
    for (const auto& [further, errors] : broken) {
        for (const bool isDryRun : {true, false}) {
            const Outcome outcome =
                run(good + further, isDryRun ? std::vector<Text>{u"--dry-run"} : std::vector<Text>{});
            EXPECT_EQ(outcome.exitCode, kExitError);
            EXPECT_EQ(outcome.printed, "");
            EXPECT_TRUE(outcome.errors.starts_with(errors)) << outcome.errors;
        }
    }
    const Outcome tried = run(good, {u"--dry-run"});
    EXPECT_EQ(tried.printed, "1\n2\n1\n");
    EXPECT_EQ(tried.errors, "Probelauf: Die Datei ist unverändert.\n");
    EXPECT_EQ(content(), before);
    const std::vector<Text> fromInput{u"exec", file_, u"-", u"--password=HwendorpliqZ"};
    EXPECT_EQ(Command::call(fromInput, {}, good).printed, "1\n2\n1\n");
    EXPECT_EQ(call(u"query", {u"SELECT BenKTO_ID, BenKTO_Name FROM Benutzerkonto WHERE BenKTO_ID >= 200"}).printed,
              "BenKTO_ID\tBenKTO_Name\n201\tä;\\r\\n -- b\n");
    EXPECT_EQ(Command::call(fromInput, {}, "-- nichts\n;").errors.substr(0, 35), "kontodb: 5: Es ist keine Anweisung ");
}

}  // namespace
}  // namespace kontodb
