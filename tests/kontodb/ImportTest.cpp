#include <fstream>

#include "accounts/AccountTable.h"
#include "tests/kontodb/Command.h"

namespace kontodb {
namespace {

class Import : public Command {
protected:
    Import() { expect("\n$ create k.mdb --password=\nk.mdb: 0 Konten\n"); }

    static std::string csvOf(const Text& file) {
        const Text select =
            u"SELECT BenKTO_ID, BenKTO_Name, BenKTO_ServerPath, BenKTO_R_ProgUpdate FROM Benutzerkonto "
            u"WHERE BenKTO_Pass = '" +
            Text(tolv::accountTable::kStoredInitialPassword) + u"'";
        return call({u"query", file, select, u"--csv"}).printed;
    }
};

TEST_F(Import, ReadsWhatQueryWritesAndWhatSpreadsheetsSave) {
    const std::string head = "BenKTO_ID,BenKTO_Name,BenKTO_ServerPath,BenKTO_R_ProgUpdate\r\n";
    // The imported file, and its rows as query --csv prints them. Numbers continue from case to case.
    const std::pair<std::string, std::string> cases[] = {
        {"BenKTO_Name,BenKTO_ServerPath\nAnna,C:\\A\n", "1,Anna,C:\\A,0\r\n"},
        {"\xEF\xBB\xBF"
         "serverpath;benutzername;PROGRAMMUPDATE\r\nC:\\B; Bärbel ;wahr\r\n",
         "2,Bärbel,C:\\B,-1\r\n"},
        {"BenKTO_Name;BenKTO_ServerPath;BenKTO_R_ProgUpdate\nJ\xF6rg \x80;C:\\\xDC;-1", "3,Jörg €,C:\\Ü,-1\r\n"},
        {"BenKTO_ServerPath\tBenKTO_Name\rD:\\;,\tTim\r\r", "4,Tim,\"D:\\;,\",0\r\n"},
        {"BenKTO_Name,\"BenKTO_ServerPath\"\r\n\"Zwei\r\nZeilen\",\"C:\\\"\"x\"\"\"\r\n",
         "5,\"Zwei\r\nZeilen\",\"C:\\\"\"x\"\"\",0\r\n"},
        {"BenKTO_Name,BenKTO_ServerPath,BenKTO_ID,BenKTO_Pass\nUwe,C:\\U,99,geheim\n", "6,Uwe,C:\\U,0\r\n"},
        {"BenKTO_Name,BenKTO_ServerPath\r\n", ""},
    };
    std::string expected = head;
    for (const auto& [csv, rows] : cases) {
        const Outcome outcome = call({u"import", u"k.mdb", u"-"}, csv);
        EXPECT_EQ(outcome.exitCode, kExitSuccess) << outcome.errors;
        EXPECT_EQ(csvOf(u"k.mdb"), expected += rows);
    }
    write("k.csv", csvOf(u"k.mdb"));
    expect(R"(
$ create andere.mdb --password=
andere.mdb: 0 Konten
$ import andere.mdb k.csv
6 Konten angelegt. Das Initialpasswort ist MNwelKOP.
$ check andere.mdb
In Ordnung: …
)");
    EXPECT_EQ(csvOf(u"andere.mdb"), csvOf(u"k.mdb"));
}

TEST_F(Import, ReportsEveryFaultAndWritesNothing) {
    ASSERT_EQ(call({u"import", u"k.mdb", u"-"}, "BenKTO_Name,BenKTO_ServerPath\nStraße,C:\\\n").exitCode, kExitSuccess);
    const std::string head = "BenKTO_Name,BenKTO_ServerPath,BenKTO_R_ProgUpdate\n";
    const std::pair<std::string, std::string> cases[] = {
        {head + "Gut,C:\\,1\n\"Mit\nZeile\",C:\\,1\n ,C:\\,1\nOtto, ,1\nSTRASSE,C:\\,1\ngUT,C:\\,1\n" +
             std::string(101, 'n') + ",C:\\,1\nO'Neil,C:\\,1\nTom,C:\\,2\nTom,C:\\\n",
         "Zeile 5: der Benutzername fehlt\n"
         "! Zeile 6: der Pfad fehlt\n"
         "! Zeile 7: ein Konto mit dem Namen 'STRASSE' gibt es schon\n"
         "! Zeile 8: ein Konto mit dem Namen 'gUT' gibt es schon\n"
         "! Zeile 9: der Benutzername ist länger als 100 Zeichen\n"
         "! Zeile 10: der Benutzername enthält einen Apostroph, den die Benutzerkontenverwaltung nicht speichern kann\n"
         "! Zeile 11: '2' ist bei BenKTO_R_ProgUpdate weder 1 noch 0\n"
         "! Zeile 12: 2 Felder statt 3\n"
         "! 8 Zeilen sind falsch; nichts wurde geschrieben."},
        {head + "Tim,\n", "Zeile 2: 2 Felder statt 3\n! 1 Zeile ist falsch; nichts wurde geschrieben."},
        {"", "kontodb: …Die CSV-Datei ist leer…"},
        {"BenKTO_Name\nx\n", "kontodb: …In der ersten Zeile fehlt die Spalte BenKTO_ServerPath.…"},
        {"BenKTO_Name,Ort\nx,y\n", "kontodb: …Die Spalte 'Ort' gibt es nicht…"},
        {"BenKTO_Name,Benutzername,ServerPath\nx,y,z\n", "kontodb: …Die Spalte 'Benutzername' steht zweimal da.…"},
        {head + "x,\"y,1\n", "kontodb: …Zeile 2: ein Anführungszeichen wird nicht geschlossen…"},
        {head + "x,\"y\"y,1\n", "kontodb: …Zeile 2: nach einem Anführungszeichen geht es weiter…"},
        {"\xFF\xFE"
         "B",
         "kontodb: …UTF-16…"},
    };
    for (const auto& [csv, errors] : cases) {
        write("k.csv", csv);
        expect("\n$ import k.mdb k.csv\n! " + errors + "\n");
    }
    write("k.csv", head + "Neu,C:\\,1\n");
    expect("\n$ import k.mdb k.csv --dry-run\n1 Konto ohne Fehler\n! Probelauf: Die Datei ist unverändert.\n");
}

}  // namespace
}  // namespace kontodb
