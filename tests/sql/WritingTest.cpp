#include <gmock/gmock.h>
#include <string>

#include "base/RuntimeError.h"
#include "jet/sql/Execution.h"
#include "jet/sql/SelectExecutor.h"
#include "tests/support/FaultyStorage.h"
#include "tests/support/SampleFile.h"
#include "tests/support/SoundFile.h"

namespace jet::sql {
namespace {

using base::Text;
using base::Value;

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
    table.design.indexes = {{u"PrimaryKey", {{u"Nr"}}, true, IndexDefinition::kUnique | IndexDefinition::kRequired},
                            {u"Name", {{u"Name"}}, false, IndexDefinition::kUnique},
                            {u"Klasse", {{u"Klasse"}, {u"Ort"}}, false, 0}};
    const Value none = base::Null{};
    table.rows = {{1, Text(u"a"), Text(u"Bonn"), false, std::int16_t{7}},
                  {2, Text(u"b"), Text(u"Köln"), false, std::int16_t{7}},
                  {3, Text(u"c"), none, true, none},
                  {4, Text(u"d"), Text(u"Ulm"), true, std::int16_t{-1}}};
    return test::sampleFile({table});
}

class Writing : public testing::Test {
protected:
    /// The number of rows, or the error.
    static std::string run(Database& database, base::TextView statement) {
        try {
            return std::to_string(execute(database, statement));
        } catch (const base::RuntimeError& error) {
            return error.what();
        }
    }

    /// "1abc 0 7|": number, name, place, right and class of each row, null as "-".
    static std::string rowsOf(Database& database) {
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

    static std::string print(const Value& value) {
        if (const auto* text = std::get_if<Text>(&value)) return base::toUtf8(*text);
        if (const auto* flag = std::get_if<bool>(&value)) return *flag ? "ja" : "nein";
        if (const auto* number = std::get_if<std::int32_t>(&value)) return std::to_string(*number);
        if (const auto* number = std::get_if<std::int16_t>(&value)) return std::to_string(*number);
        return "-";
    }
};

constexpr char kBefore[] = "1 a Bonn nein 7|2 b Köln nein 7|3 c - ja -|4 d Ulm ja -1|";

TEST_F(Writing, StatementsChangeTheRowsTheyNameAndCountThem) {
    const struct {
        Text statement;
        std::string count;
        std::string after;
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
        {u"UPDATE Konto SET Ort = 'x' WHERE Nr = 17", "0", kBefore},
        {u"UPDATE Konto SET Ort = 'Bonn' WHERE Nr = 1", "1", kBefore},
        {u"DELETE FROM Konto WHERE Nr = 3", "1", "1 a Bonn nein 7|2 b Köln nein 7|4 d Ulm ja -1|"},
        {u"DELETE * FROM Konto WHERE Klasse = 7 OR Ort IS NULL", "3", "4 d Ulm ja -1|"},
        {u"DELETE FROM Konto", "4", ""},
        {u"INSERT INTO Konto (Name, Klasse) VALUES ('e', 3)", "1", std::string(kBefore) + "5 e - nein 3|"},
        {u"INSERT INTO Konto VALUES (20, 'f', 'Rom', TRUE, NULL)", "1", std::string(kBefore) + "20 f Rom ja -|"},
        {u"SELECT * FROM Konto", "0", kBefore},
    };
    for (const auto& [statement, count, after] : cases) {
        const test::Machine machine(accounts());
        auto database = Database::open(machine.storage(), {}, LeftJournalRule::RollBack);
        EXPECT_EQ(run(database, statement), count) << base::toUtf8(statement);
        EXPECT_EQ(rowsOf(database), after) << base::toUtf8(statement);
        EXPECT_EQ(test::faultsIn(machine.file()), "") << base::toUtf8(statement);
        EXPECT_EQ(machine.journal(), std::nullopt);
    }
}

TEST_F(Writing, AStatementThatFailsChangesNoByte) {
    const std::string duplicate = "-2147467259: Die von Ihnen vorgenommenen Änderungen";
    const std::string parameter = "-2147217904: ";
    const struct {
        Text statement;
        std::string error;
    } cases[] = {
        // The first row could be changed, the second one then has the same name.
        {u"UPDATE Konto SET Name = 'z'", duplicate},
        {u"UPDATE Konto SET Name = 'D' WHERE Klasse = 7", duplicate},
        {u"INSERT INTO Konto (Name) VALUES ('B')", duplicate},
        {u"INSERT INTO Konto (Nr, Name) VALUES (4, 'neu')", duplicate},
        // The third row has no place.
        {u"UPDATE Konto SET Name = Ort", "-2147467259: Das Feld 'Konto.Name' kann keinen Nullwert enthalten"},
        {u"INSERT INTO Konto (Ort) VALUES ('Bonn')", "-2147467259: Das Feld 'Konto.Name' kann keinen Nullwert"},
        {u"UPDATE Konto SET Name = 'elf Zeichen'", "-2147217833: Das Feld ist zu klein"},
        {u"UPDATE Konto SET Klasse = 'viele'", "-2147217913: Datentypenkonflikt"},
        {u"UPDATE Konto SET Nr = 9 WHERE Nr = 1", "-21474"},
        {u"UPDATE Konto SET Name = 'O'Neil' WHERE Nr = 1",
         "-2147217900: Syntaxfehler (fehlender Operator) in Abfrageausdruck ''O'Neil' WHERE Nr = 1'."},
        {u"DELETE FROM Konto WHERE Name = 'O'Neil'",
         "-2147217900: Syntaxfehler (fehlender Operator) in Abfrageausdruck 'Name = 'O'Neil''."},
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
    const test::Machine machine(before);
    auto database = Database::open(machine.storage(), {}, LeftJournalRule::RollBack);
    for (const auto& [statement, error] : cases) {
        EXPECT_THAT(run(database, statement), testing::StartsWith(error)) << base::toUtf8(statement);
        EXPECT_EQ(machine.file(), before) << base::toUtf8(statement);
    }
    EXPECT_EQ(machine.steps(), 0);
}

}  // namespace
}  // namespace jet::sql
