#include <random>

#include "tests/kontodb/Command.h"

namespace kontodb {
namespace {

class Exec : public Command {
protected:
    Exec() { expect("\n$ create k.mdb --accounts 200 --password=\nk.mdb: 200 Konten\n"); }

    /// Whatever was written, the file must be sound, and no journal may be left.
    void TearDown() override {
        expect("\n$ check k.mdb\nIn Ordnung: …\n");
        EXPECT_FALSE(std::filesystem::exists("k.mdb-journal"));
    }
};

TEST_F(Exec, ChangesRowsAndPrintsTheirCount) {
    expect(R"_(
$ exec k.mdb "UPDATE Benutzerkonto SET BenKTO_Pass = 'neu' WHERE BenKTO_ID = 17"
1
$ exec k.mdb "DELETE FROM Benutzerkonto WHERE BenKTO_ID BETWEEN 101 AND 150"
50
$ exec k.mdb "DELETE FROM Benutzerkonto WHERE BenKTO_ID = 101"
0
$ exec k.mdb "INSERT INTO Benutzerkonto (BenKTO_Name, BenKTO_R_ProgUpdate) VALUES ('Älfred', 1)"
1
$ exec k.mdb "DELETE FROM Benutzerkonto WHERE BenKTO_ID < 8" > full
7
! kontodb: 57: Voll. Die Anweisung ist trotzdem ausgeführt; Zahl der Zeilen: 7.
$ query k.mdb "SELECT COUNT(*) FROM Benutzerkonto"
Anzahl
144
)_");
}

TEST_F(Exec, QueriesLeavePasswordsOutUnlessTheirColumnIsNamed) {
    expect(R"(
$ exec k.mdb "UPDATE Benutzerkonto SET BenKTO_Pass = 'neu', BenKTO_ServerPath = NULL WHERE BenKTO_Name LIKE '%'"
200
$ query k.mdb "SELECT TOP 1 * FROM [benutzerkonto] ORDER BY BenKTO_Pass, BenKTO_ID" --csv
BenKTO_ID,BenKTO_Name,BenKTO_ServerPath,BenKTO_R_ProgUpdate␍
1,…,,…␍
! Hinweis: Die Spalte BenKTO_Pass fehlt bei SELECT *; wer die Passwörter braucht, nennt die Spalten.
$ query k.mdb "SELECT * FROM Benutzerkonto WHERE BenKTO_ID = 1" --json
{"BenKTO_ID": 1, "BenKTO_Name": "…", "BenKTO_ServerPath": null, "BenKTO_R_ProgUpdate": …e}
! Hinweis: Die Spalte BenKTO_Pass fehlt…
$ query k.mdb "SELECT benkto_pass FROM Benutzerkonto WHERE BenKTO_ID = 17"
BenKTO_Pass
neu
)");
}

TEST_F(Exec, ReportsErrorsAndChangesNothing) {
    expect(R"(
$ exec k.mdb "DELETE FROM Benutzerkonto WHERE BenKTO_Name = 'O'Neil'"
! kontodb: -2147217900: Syntaxfehler (fehlender Operator) in Abfrageausdruck 'BenKTO_Name = 'O'Neil''.
! …
$ exec k.mdb "UPDATE Benutzerkonto SET BenKTO_ID = 5" --all
! kontodb: -2147…
$ exec k.mdb "UPDATE Benutzerkonto SET BenKTO_Name = 'x'"
! kontodb: 5: UPDATE ohne WHERE ändert alle Zeilen der Tabelle 'Benutzerkonto'. Ist das gemeint, geben Sie --all…
$ exec k.mdb "DELETE * FROM Benutzerkonto;" --dry-run
! kontodb: 5: DELETE ohne WHERE löscht alle Zeilen…
$ exec k.mdb "DELETE FROM Benutzerkonto WHERE BenKTO_ID = 1; DELETE FROM Benutzerkonto"
! kontodb: -2147217900: Nach dem Ende der SQL-Anweisung wurden Zeichen gefunden.
!   DELETE FROM Benutzerkonto WHERE BenKTO_ID = 1; DELETE FROM Benutzerkonto
!                                                  ^
! Mehrere Anweisungen führt aus: kontodb exec DATEI --file…
$ exec k.mdb --file "gibt es nicht"
! kontodb: -2147467259: Datei 'gibt es nicht' nicht gefunden.
)");
}

TEST_F(Exec, AScriptHasTheSameEffectAsItsStatementsOneByOne) {
    std::mt19937 random(20261125);
    const auto below = [&](std::size_t limit) { return base::decimal(random() % limit); };
    std::filesystem::copy("k.mdb", "andere.mdb");
    Text script;
    std::string counts;
    for (int i = 0; i < 60; ++i) {
        const Text path = u"'X:\\" + Text(random() % 200, u'ä') + below(5) + u"'";
        const Text where = u" WHERE BenKTO_ID " + Text(random() % 3 == 0 ? u"> 2" : u"= ") + below(220) +
                           (random() % 2 == 0 ? u" OR BenKTO_ServerPath LIKE '%ä" + below(5) + u"'" : u"");
        Text insert = u"INSERT INTO Benutzerkonto (BenKTO_Name, BenKTO_ServerPath) VALUES ('Neu ";
        insert.append(below(30)).append(u"', ").append(path).append(u")");
        Text update = u"UPDATE Benutzerkonto SET BenKTO_ServerPath = ";
        update.append(path).append(where);
        const Text statements[] = {insert, update, u"DELETE FROM BENUTZERKONTO" + where};
        const Text& statement = statements[random() % 3];
        counts += call({u"exec", u"k.mdb", statement}).printed;
        script.append(statement).append(u";\n");
    }
    EXPECT_EQ(call({u"exec", u"andere.mdb", u"-"}, base::toUtf8(script)).printed, counts);
    const Text all = u"SELECT BenKTO_ID, BenKTO_Name, BenKTO_ServerPath FROM Benutzerkonto ORDER BY BenKTO_ID";
    EXPECT_EQ(call({u"query", u"andere.mdb", all}).printed, call({u"query", u"k.mdb", all}).printed);
    expect("\n$ check andere.mdb\nIn Ordnung: …\n");
}

TEST_F(Exec, CarriesOutAllStatementsOfAScriptOrNone) {
    const std::string good =
        "\xEF\xBB\xBF-- Anlegen; und 'löschen\r\n"
        "INSERT INTO Benutzerkonto (BenKTO_Name) VALUES ('ä;\r\n -- b');\r\n"
        "UPDATE Benutzerkonto SET [BenKTO_Pass] = 'neu' WHERE BenKTO_ID >= 200 ;;\n"
        "DELETE FROM Benutzerkonto WHERE BenKTO_Pass = 'neu' AND BenKTO_ID < 201;\r\n";
    const std::pair<std::string, std::string> broken[] = {
        {"DELETE FROM Benutzerkonto\nWHERE BenKTO_Name = 'O'Neil';\nDELETE FROM Benutzerkonto WHERE BenKTO_ID = 1;",
         R"(
! kontodb: -2147217900: Syntaxfehler (fehlender Operator) in Abfrageausdruck 'BenKTO_Name = 'O'Neil';'.
! Anweisung 4, Zeile 7:
!   WHERE BenKTO_Name = 'O'Neil';
!                          ^
! Ein Text steht in '...'; ein Apostroph darin wird doppelt geschrieben: 'O''Neil'.
! Keine der Anweisungen ist ausgeführt.
)"},
        {"UPDATE Benutzerkonto SET BenKTO_Nam = 'x' WHERE BenKTO_ID = 3", R"(
! kontodb: -2147217904: Für mindestens einen erforderlichen Parameter wurde kein Wert angegeben.
! Anweisung 4, Zeile 6:
!   UPDATE Benutzerkonto SET BenKTO_Nam = 'x' WHERE BenKTO_ID = 3
!                            ^
! Die Tabelle 'Benutzerkonto' hat keine Spalte 'BenKTO_Nam'. Meinten Sie 'BenKTO_Name'?
! Keine der Anweisungen ist ausgeführt.
)"},
        {"INSERT INTO Benutzerkonto (BenKTO_ID) VALUES (7)",
         "\n! kontodb: -2147467259: Die von Ihnen vorgenommenen Änderungen an der Tabelle konnten nicht…\n"},
        {"DELETE FROM Benutzerkonto", "\n! kontodb: 5: Anweisung 4: DELETE ohne WHERE…\n"},
        {"SELECT * FROM Benutzerkonto", "\n! kontodb: 5: Anweisung 4: exec führt…\n"},
        {"-- ä als \xE4", "\n! kontodb: 5: Die Datei 'a.sql' ist nicht in UTF-8 gespeichert.\n…"},
    };
    for (const auto& [further, errors] : broken) {
        write("a.sql", good + further);
        for (const char* option : {"", " --dry-run"})
            expect(std::string("\n$ exec k.mdb --file a.sql").append(option).append(errors));
    }
    write("a.sql", good);
    std::filesystem::copy("k.mdb", "andere.mdb");
    expect(R"(
$ exec k.mdb --file a.sql --dry-run
1
2
1
! Probelauf: Die Datei ist unverändert.
$ exec andere.mdb --file a.sql > tty
Anweisung 1: 1 Zeile
Anweisung 2: 2 Zeilen
Anweisung 3: 1 Zeile
$ query andere.mdb "SELECT BenKTO_ID, BenKTO_Name FROM Benutzerkonto WHERE BenKTO_ID >= 200"
BenKTO_ID␉BenKTO_Name
201␉ä;\r\n -- b
)");
    EXPECT_EQ(call({u"exec", u"k.mdb", u"-"}, good).printed, "1\n2\n1\n");
    EXPECT_TRUE(contentOf("k.mdb") == contentOf("andere.mdb"));
}

}  // namespace
}  // namespace kontodb
