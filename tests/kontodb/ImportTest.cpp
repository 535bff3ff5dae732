#include <fstream>

#include "accounts/AccountTable.h"
#include "tests/kontodb/Command.h"

namespace kontodb {
namespace {

class Import : public Command {
protected:
    Import() { EXPECT_EQ(call({u"create", file_, u"--password="}).exitCode, kExitSuccess); }

    Outcome import(const std::string& csv, const std::vector<Text>& options = {}) const {
        std::vector<Text> arguments{u"import", file_, u"-"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return call(arguments, {}, csv);
    }

    /// Without the passwords, which are all the same.
    static std::string csvOf(const Text& file) {
        std::string csv = call({u"query", file, u"SELECT * FROM Benutzerkonto", u"--csv"}).printed;
        for (const std::string& password : {"," + base::toUtf8(tolv::accountTable::kPass),
                                            "," + base::toUtf8(tolv::accountTable::kStoredInitialPassword)})
            for (std::size_t at = 0; (at = csv.find(password)) != csv.npos;)
                csv.erase(at, password.size());
        return csv;
    }

    Text file_ = path(u"Konten.mdb");
};

TEST_F(Import, ReadsWhatQueryWritesAndWhatSpreadsheetsSave) {
    const std::string head = "BenKTO_ID,BenKTO_Name,BenKTO_ServerPath,BenKTO_R_ProgUpdate\r\n";
    const struct {
        std::string csv;
        std::string rows;  ///< as query --csv prints them, after the head; numbers go on from case to case
    } cases[] = {
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
        const Outcome outcome = import(csv);
        EXPECT_EQ(outcome.exitCode, kExitSuccess) << outcome.errors;
        EXPECT_EQ(csvOf(file_), expected += rows);
    }
    const Outcome others = call({u"exec", file_,
                                 u"DELETE FROM Benutzerkonto WHERE BenKTO_Pass <> '" +
                                     Text(tolv::accountTable::kStoredInitialPassword) + u"'"});
    EXPECT_EQ(others.printed, "0\n") << others.errors;

    const Text other = path(u"Andere.mdb"), list = path(u"Konten.csv");
    ASSERT_EQ(call({u"create", other, u"--password="}).exitCode, kExitSuccess);
    std::ofstream(std::filesystem::path(list), std::ios::binary) << csvOf(file_);
    EXPECT_EQ(call({u"import", other, list}).printed, "6 Konten angelegt. Das Initialpasswort ist MNwelKOP.\n");
    EXPECT_EQ(csvOf(other), csvOf(file_));
    EXPECT_EQ(call({u"check", other}).exitCode, kExitSuccess);
}

TEST_F(Import, NamesEveryFaultAndWritesNothing) {
    ASSERT_EQ(import("BenKTO_Name,BenKTO_ServerPath\nStraße,C:\\\n").exitCode, kExitSuccess);
    const std::string before = contentOf(file_);
    const std::string head = "BenKTO_Name,BenKTO_ServerPath,BenKTO_R_ProgUpdate\n";
    const std::pair<std::string, std::string> cases[] = {
        {head + "Gut,C:\\,1\n\"Mit\nZeile\",C:\\,1\n ,C:\\,1\nOtto, ,1\nSTRASSE,C:\\,1\ngUT,C:\\,1\n" +
             std::string(101, 'n') + ",C:\\,1\nO'Neil,C:\\,1\nTom,C:\\,2\nTom,C:\\\n",
         "Zeile 5: der Benutzername fehlt\n"
         "Zeile 6: der Pfad fehlt\n"
         "Zeile 7: ein Konto mit dem Namen 'STRASSE' gibt es schon\n"
         "Zeile 8: ein Konto mit dem Namen 'gUT' gibt es schon\n"
         "Zeile 9: der Benutzername ist länger als 100 Zeichen\n"
         "Zeile 10: der Benutzername enthält einen Apostroph, den die Benutzerkontenverwaltung nicht speichern kann\n"
         "Zeile 11: '2' ist bei BenKTO_R_ProgUpdate weder 1 noch 0\n"
         "Zeile 12: 2 Felder statt 3\n"
         "8 Zeilen sind falsch; nichts wurde geschrieben.\n"},
        {"", "Die CSV-Datei ist leer"},
        {"BenKTO_Name\nx\n", "In der ersten Zeile fehlt die Spalte BenKTO_ServerPath."},
        {"BenKTO_Name,Ort\nx,y\n", "Die Spalte 'Ort' gibt es nicht"},
        {"BenKTO_Name,Benutzername,ServerPath\nx,y,z\n", "Die Spalte 'Benutzername' steht zweimal da."},
        {head + "x,\"y,1\n", "Zeile 2: ein Anführungszeichen wird nicht geschlossen"},
        {head + "x,\"y\"y,1\n", "Zeile 2: nach einem Anführungszeichen geht es weiter"},
        {"\xFF\xFE"
         "B",
         "UTF-16"},
    };
    for (const auto& [csv, errors] : cases) {
        const Outcome outcome = import(csv);
        EXPECT_EQ(outcome.exitCode, kExitError) << csv;
        EXPECT_NE(outcome.errors.find(errors), std::string::npos) << outcome.errors << "\nwanted: " << errors;
        EXPECT_EQ(outcome.printed, "");
        EXPECT_TRUE(contentOf(file_) == before);
    }
    const Outcome rehearsed = import(head + "Neu,C:\\,1\n", {u"--dry-run"});
    EXPECT_EQ(rehearsed.printed, "1 Konto ohne Fehler\n");
    EXPECT_EQ(rehearsed.exitCode, kExitSuccess);
    EXPECT_TRUE(contentOf(file_) == before);
    EXPECT_EQ(names().size(), 1U);
}

}  // namespace
}  // namespace kontodb
