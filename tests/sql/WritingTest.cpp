#include <gmock/gmock.h>
#include <string>

#include "base/RuntimeError.h"
#include "jet/sql/Execution.h"
#include "jet/sql/SelectExecutor.h"
#include "tests/support/FaultyStorage.h"
#include "tests/support/MemoryPageStore.h"
#include "tests/support/RelatedTables.h"
#include "tests/support/SampleFile.h"
#include "tests/support/SoundFile.h"

namespace jet::sql {
namespace {

using base::Text;
using base::Value;

/// Accounts, and two tables with something that the engine does not understand.
base::Bytes accounts() {
    test::SampleTable table;
    table.design.name = u"Konto";
    ColumnDesign number{u"Nr", ColumnType::Long};
    number.isAutoNumber = true;
    table.design.columns = {number,
                            {u"Name", ColumnType::Text, 10},
                            {u"Ort", ColumnType::Text, 20},
                            {u"Recht", ColumnType::Boolean},
                            {u"Klasse", ColumnType::Integer}};
    table.design.columns[1].isRequired = true;
    table.design.columns[1].allowsZeroLength = false;
    table.design.indexes = {{u"PrimaryKey", {{u"Nr"}}, true, IndexDefinition::kUnique | IndexDefinition::kRequired},
                            {u"Name", {{u"Name"}}, false, IndexDefinition::kUnique},
                            {u"Klasse", {{u"Klasse"}, {u"Ort"}}, false, 0}};
    const Value none = base::Null{};
    table.rows = {{1, Text(u"a"), Text(u"Bonn"), false, std::int16_t{7}},
                  {2, Text(u"b"), Text(u"Köln"), false, std::int16_t{7}},
                  {3, Text(u"c"), none, true, none},
                  {4, Text(u"d"), Text(u"Ulm"), true, std::int16_t{-1}}};
    const TableDesign strange{u"Fremd", {{u"Nr", ColumnType::Long}, {u"Zahl", ColumnType::Long}}, {}};
    const TableDesign given{u"Vorgabe", {{u"Nr", ColumnType::Long}, {u"Text", ColumnType::Text, 50}}, {}};
    test::MemoryPageStore store(test::sampleFile({table, {strange, {{1, 1}}}, {given, {}}}));
    test::setProperty(store, u"Konto", u"Ort", u"DefaultValue", u"\"Wien\"");
    test::setProperty(store, u"Konto", u"Klasse", u"ValidationRule", u">-5 Or Is Null");
    test::setProperty(store, u"Fremd", u"Zahl", u"ValidationRule", u"Rnd()>0");
    test::setProperty(store, u"Vorgabe", u"Text", u"DefaultValue", u"GenGUID()");
    return store.file();
}

/// The number of rows, or the error.
std::string run(Database& database, base::TextView statement) {
    try {
        return std::to_string(execute(database, statement));
    } catch (const base::RuntimeError& error) {
        return error.what();
    }
}

std::string print(const Value& value) {
    if (const auto* text = std::get_if<Text>(&value)) return base::toUtf8(*text);
    if (const auto* flag = std::get_if<bool>(&value)) return *flag ? "ja" : "nein";
    if (const auto* number = std::get_if<std::int32_t>(&value)) return std::to_string(*number);
    if (const auto* number = std::get_if<std::int16_t>(&value)) return std::to_string(*number);
    return "-";
}

/// "1 a Bonn nein 7|": the values of each row, null as "-".
std::string rowsOf(Database& database) {
    auto operation = database.beginRead();
    const ResultSet rows = executeSelect(operation, u"SELECT * FROM Konto ORDER BY Nr");
    std::string all;
    for (std::size_t row = 0; row < rows.rowCount(); ++row) {
        for (std::size_t column = 0; column < rows.columnCount(); ++column)
            all += (column == 0 ? "" : " ") + print(rows.value(row, column));
        all += '|';
    }
    return all;
}

constexpr char kBefore[] = "1 a Bonn nein 7|2 b Köln nein 7|3 c - ja -|4 d Ulm ja -1|";

TEST(Writing, AStatementChangesTheRowsThatItNamesOrNothing) {
    const std::string duplicate = "-2147467259: Die von Ihnen vorgenommenen Änderungen";
    const std::string parameter = "-2147217904: ";
    const struct {
        Text statement;
        std::string outcome;  ///< the number of rows, or an error, in which "?" stands for any text
        std::string after = kBefore;
    } cases[] = {
        {u"UPDATE Konto SET Ort = 'Trier' WHERE Nr = 2", "1",
         "1 a Bonn nein 7|2 b Trier nein 7|3 c - ja -|4 d Ulm ja -1|"},
        {u"update KONTO set recht = 1, ort = NULL where klasse = 7", "2",
         "1 a - ja 7|2 b - ja 7|3 c - ja -|4 d Ulm ja -1|"},
        {u"UPDATE Konto SET Ort = Name, Name = Ort WHERE Name = 'A';", "1",
         "1 Bonn a nein 7|2 b Köln nein 7|3 c - ja -|4 d Ulm ja -1|"},
        {u"UPDATE Konto SET Recht = Klasse = 7", "4", "1 a Bonn ja 7|2 b Köln ja 7|3 c - nein -|4 d Ulm nein -1|"},
        {u"UPDATE Konto SET Klasse = '12', Recht = -1.5 WHERE Nr IN (1, 4)", "2",
         "1 a Bonn ja 12|2 b Köln nein 7|3 c - ja -|4 d Ulm ja 12|"},
        {u"UPDATE Konto SET Ort = 'x' WHERE Nr = 17", "0"},
        {u"UPDATE Konto SET Ort = 'Bonn' WHERE Nr = 1", "1"},
        {u"DELETE FROM Konto WHERE Nr = 3", "1", "1 a Bonn nein 7|2 b Köln nein 7|4 d Ulm ja -1|"},
        {u"DELETE * FROM Konto WHERE Klasse = 7 OR Ort IS NULL", "3", "4 d Ulm ja -1|"},
        {u"DELETE FROM Konto", "4", ""},
        {u"INSERT INTO Konto (Name, Klasse) VALUES ('e', 3)", "1", std::string(kBefore) + "5 e Wien nein 3|"},
        {u"INSERT INTO Konto VALUES (20, 'f', 'Rom', TRUE, NULL)", "1", std::string(kBefore) + "20 f Rom ja -|"},
        {u"INSERT INTO Vorgabe (Nr, Text) VALUES (1, NULL)", "1"},
        {u"UPDATE Fremd SET Nr = 2", "1"},
        {u"SELECT * FROM Konto", "0"},
        // The first row can be changed, but then the second one would get the same name.
        {u"UPDATE Konto SET Name = 'z'", duplicate},
        {u"UPDATE Konto SET Name = 'D' WHERE Klasse = 7", duplicate},
        {u"INSERT INTO Konto (Name) VALUES ('B')", duplicate},
        {u"INSERT INTO Konto (Nr, Name) VALUES (4, 'neu')", duplicate},
        // `Ort` is null in the third row.
        {u"UPDATE Konto SET Name = Ort", "-2147467259: Das Feld 'Konto.Name' kann keinen Nullwert enthalten"},
        {u"INSERT INTO Konto (Ort) VALUES ('Bonn')", "-2147467259: Das Feld 'Konto.Name' kann keinen Nullwert"},
        {u"UPDATE Konto SET Name = 'elf Zeichen'", "-2147217833: Das Feld ist zu klein"},
        {u"UPDATE Konto SET Klasse = 'viele'", "-2147217913: Datentypenkonflikt"},
        {u"UPDATE Konto SET Klasse = 3e9", "-2147217833: "},
        {u"UPDATE Konto SET Name = '' WHERE Nr = 1", "-2147467259: Feld 'Konto.Name' kann keine leere"},
        {u"UPDATE Konto SET Name = '\U0001F600' WHERE Nr = 1", "-2147467259: Der Index 'Name'"},
        {u"UPDATE Konto SET Klasse = -5 WHERE Nr = 1",
         "-2147467259: ?Gültigkeitsregel '>-5 Or Is Null' für 'Konto.Klasse'"},
        {u"UPDATE Fremd SET Zahl = 2", "-2147467259: ?'Rnd()>0' für 'Fremd.Zahl'"},
        {u"INSERT INTO Vorgabe (Nr) VALUES (2)", "-2147467259: ?'GenGUID()' der Spalte 'Text'"},
        {u"DELETE FROM MSysObjects", "-2147467259: ?"},
        {u"UPDATE Konto SET Nr = 9 WHERE Nr = 1", "-21474?nicht aktualisiert werden"},
        {u"UPDATE Konto SET Vorname = 'x' WHERE Nr = 1", parameter},
        {u"UPDATE Konto SET Ort = Vorname", parameter},
        {u"DELETE FROM Konto WHERE Vorname = 'x'", parameter},
        {u"DELETE FROM Konto WHERE Nr = 'x'", "-2147217913: "},
        {u"DELETE FROM Kunde", "-2147217865: "},
        {u"INSERT INTO Konto (Vorname) VALUES ('x')",
         "-2147217900: Die INSERT INTO-Anweisung enthält folgenden unbekannten Feldnamen: 'Vorname'."},
        {u"INSERT INTO Konto (Name, Ort) VALUES ('x', Name)", parameter},
        {u"INSERT INTO Konto (Name, name) VALUES ('x', 'y')", "-2147217900: Doppeltes Ausgabeziel 'Name'."},
        {u"UPDATE Konto SET Ort = 'x', [ort] = 'y'", "-2147217900: Doppeltes Ausgabeziel 'Ort'."},
        {u"INSERT INTO Konto VALUES (20, 'f')", "-2147217900: Die Anzahl der Abfragewerte"},
    };
    const base::Bytes before = accounts();
    for (const auto& [statement, outcome, after] : cases) {
        SCOPED_TRACE(base::toUtf8(statement));
        const test::Machine machine(before);
        auto database = Database::open(machine.storage(), {}, LeftJournalRule::RollBack);
        const std::string found = run(database, statement);
        EXPECT_THAT(found, testing::StartsWith(outcome.substr(0, outcome.find('?'))));
        EXPECT_THAT(found, testing::HasSubstr(outcome.substr(outcome.find('?') + 1)));
        EXPECT_EQ(rowsOf(database), after);
        EXPECT_TRUE(!found.starts_with('-') || (machine.file() == before && machine.steps() == 0));
        EXPECT_EQ(test::faultsIn(machine.file()), "");
        EXPECT_EQ(machine.journal(), std::nullopt);
    }
}

}  // namespace
}  // namespace jet::sql
