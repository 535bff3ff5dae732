#include <gtest/gtest.h>

#include "base/RuntimeError.h"
#include "jet/expression/StatementError.h"
#include "jet/sql/Parser.h"
#include "jet/sql/QueryExecutor.h"
#include "jet/sql/SelectExecutor.h"
#include "tests/support/SampleFile.h"

namespace jet::sql {
namespace {

base::Bytes oneTable() {
    test::SampleTable table;
    table.design.name = u"Konto";
    table.design.columns = {{u"Nr", ColumnType::Long},
                            {u"Name", ColumnType::Text, 50},
                            {u"Anlage", ColumnType::Ole},
                            {u"Ort Ä", ColumnType::Long}};
    return test::sampleFile({table});
}

/// What a statement throws.
struct Thrown {
    std::string error;  ///< "NUMBER: description", or nothing
    std::size_t place = 0;
    base::Text column;
};

Thrown thrownBy(base::TextView statement) {
    static const base::Bytes bytes = oneTable();
    Database database = test::openSample(bytes);
    ReadOperation operation = database.beginRead();
    try {
        executeQuery(operation, statement);
    } catch (const StatementError& error) {
        return {error.what(), error.place(), error.unknownColumn()};
    } catch (const base::RuntimeError& error) {
        return {error.what(), 0, {}};
    }
    return {};
}

std::string inExpression(const std::string& fault, const std::string& expression) {
    return "-2147217900: Syntaxfehler " + fault + " in Abfrageausdruck '" + expression + "'.";
}

TEST(StatementErrors, HaveTheNumbersAndTextsOfTheOriginalEngine) {
    const std::string other =
        "-2147217900: Unzulässige SQL-Anweisung; 'DELETE', 'INSERT', 'PROCEDURE', 'SELECT' oder 'UPDATE' erwartet.";
    const std::string from = "-2147217900: Syntaxfehler in FROM-Klausel.";
    const std::string order = "-2147217900: Syntaxfehler in ORDER BY-Klausel.";
    const std::string parameter =
        "-2147217904: Für mindestens einen erforderlichen Parameter wurde kein Wert angegeben.";
    const std::string types = "-2147217913: Datentypenkonflikt in Kriterienausdruck.";
    const std::string readOnly = "-2147467259: Operation muss eine aktualisierbare Abfrage verwenden.";
    const std::string missing = "(fehlender Operator)";
    const auto unsupported = [](const std::string& part) {
        return "-2147217900: Dieser Teil der SQL-Anweisung wird nicht unterstützt: '" + part + "'.";
    };
    const struct {
        base::Text statement;
        std::string error;
        std::size_t place = 0;   ///< 0: not checked
        base::Text column = {};  ///< the unknown one
    } cases[] = {
        {u"", other},
        {u"Konto", other},
        {u"SELECT", "-2147217900: Syntaxfehler in SELECT-Anweisung."},
        {u"SELECT FROM Konto", "-2147217900: Syntaxfehler in SELECT-Anweisung."},
        {u"SELECT Nr, FROM Konto", "-2147217900: Syntaxfehler in SELECT-Anweisung."},
        {u"SELECT TOP 1.5 * FROM Konto", "-2147217900: Syntaxfehler in SELECT-Anweisung."},
        {u"SELECT Nr Name FROM Konto", from},
        {u"SELECT Nr) FROM Konto", from},
        {u"SELECT Nummer FROM Konto", parameter},
        {u"SELECT Kunde.Nr FROM Konto", parameter},
        {u"SELECT Nr, * FROM Konto", unsupported("*")},
        {u"SELECT *, Nr FROM Konto", unsupported(",")},
        {u"SELECT Nr AS Zahl FROM Konto", unsupported("AS")},
        {u"SELECT Nr + 1 FROM Konto", unsupported("+")},
        {u"SELECT 'a' FROM Konto", unsupported("'a'")},
        {u"SELECT Max(Nr) FROM Konto", unsupported("Max")},
        {u"SELECT COUNT(Nr) FROM Konto", unsupported("COUNT")},
        {u"SELECT TOP 5 COUNT(*) FROM Konto", unsupported("COUNT")},
        {u"SELECT COUNT(*) FROM Konto ORDER BY Nr", unsupported("ORDER")},
        {u"SELECT TOP 5 PERCENT Nr FROM Konto", unsupported("PERCENT")},
        {u"SELECT DISTINCT Nr FROM Konto", unsupported("DISTINCT")},
        {u"SELECT TOP FROM Konto", parameter},
        {u"SELECT [ort ä], Konto.NR, nr FROM Konto", ""},
        {u"SELECT * FROM", from},
        {u"SELECT * FRM Konto", from, 9},
        {u"SELECT * FROM 'Konto'", from},
        {u"SELECT * FROM Konto k", from},
        {u"SELECT * FROM Konto, Konto", unsupported(",")},
        {u"SELECT * FROM Konto GROUP BY Nr", unsupported("GROUP")},
        {u"SELECT * FROM Konto; SELECT", "-2147217900: Nach dem Ende der SQL-Anweisung wurden Zeichen gefunden."},
        {u"SELECT * FROM Kunde",
         "-2147217865: Das Microsoft Jet-Datenbankmodul findet die Eingabetabelle oder Abfrage 'Kunde' nicht. Stellen "
         "Sie sicher, dass sie existiert und dass ihr Name richtig eingegeben wurde."},
        // Names with apostrophes, in both statements that look for a name.
        {u"SELECT * FROM Konto WHERE Name = 'O'Neil'", inExpression(missing, "Name = 'O'Neil'"), 36},
        {u"SELECT * FROM Konto WHERE Name = 'O'Neil' AND NOT Nr = 5",
         inExpression(missing, "Name = 'O'Neil' AND NOT Nr = 5")},
        {u"SELECT * FROM Konto WHERE Name = 'Neil''", inExpression("in Zeichenfolge", "Name = 'Neil''")},
        {u"SELECT * FROM Konto WHERE Name = ''' AND NOT Nr = 5",
         inExpression("in Zeichenfolge", "Name = ''' AND NOT Nr = 5")},
        // The expression is quoted as typed, from after WHERE to the next clause.
        {u"SELECT * FROM Konto WHERE  Nr  =  1  2  ORDER BY Nr", inExpression(missing, "Nr  =  1  2")},
        {u"SELECT * FROM Konto WHERE Nr = ", inExpression(missing, "Nr ="), 31},
        {u"SELECT * FROM Konto WHERE (Nr = 1", inExpression(missing, "(Nr = 1")},
        {u"SELECT * FROM Konto WHERE Nr = 1)", inExpression(missing, "Nr = 1)")},
        {u"SELECT * FROM Konto WHERE [Nr = 1", inExpression(missing, "[Nr = 1")},
        {u"SELECT * FROM Konto WHERE Nr BETWEEN 1", inExpression(missing, "Nr BETWEEN 1")},
        {u"SELECT * FROM Konto WHERE Nr IN ()", inExpression(missing, "Nr IN ()")},
        {u"SELECT * FROM Konto WHERE Nr = 1e999", inExpression(missing, "Nr = 1e999")},
        {u"SELECT * FROM Konto WHERE Nr = 1e-2147483648", inExpression(missing, "Nr = 1e-2147483648")},
        {u"SELECT * FROM Konto WHERE Nr = #13/13/2004#", inExpression("in Datum", "Nr = #13/13/2004#")},
        {u"SELECT * FROM Konto WHERE Nr = {guid {1F}} ORDER BY Nr", inExpression("in GUID", "Nr = {guid {1F}}")},
        {u"SELECT * FROM Konto WHERE Nr = {", inExpression("in GUID", "Nr = {")},
        {u"SELECT * FROM Konto WHERE Nr = {guid {1}", inExpression("in GUID", "Nr = {guid {1}")},
        {u"SELECT * FROM Konto WHERE Nr = 1 + 1", unsupported("+")},
        {u"SELECT * FROM Konto WHERE Trim(Name) = 'a'", unsupported("Trim"), 26},
        {u"SELECT * FROM Konto WHERE", "-2147217900: Syntaxfehler in WHERE-Klausel."},
        {u"SELECT * FROM Konto ORDER Nr", order},
        {u"SELECT * FROM Konto ORDER BY Nr,", order},
        // A name that is no column counts as a parameter without a value.
        {u"SELECT * FROM Konto WHERE Nummer = 1", parameter},
        {u"SELECT * FROM Konto WHERE Nr = 1 OR Kunde.[Nr] = 2", parameter, 36, u"Kunde.Nr"},
        {u"SELECT * FROM Konto ORDER BY Nr, Nummer", parameter, 33, u"Nummer"},
        {u"SELECT * FROM Konto WHERE konto.NR = 1 AND [ort ä] = 2 ORDER BY Konto.[Ort Ä]", ""},
        // Types are checked even if the table has no rows.
        {u"SELECT * FROM Konto WHERE Name = 5", types, 31},
        {u"SELECT * FROM Konto WHERE Nr = -'a'", types, 31},
        {u"SELECT * FROM Konto WHERE '5' = Nr", types},
        {u"SELECT * FROM Konto WHERE Nr NOT IN (1, 'a')", types, 29},
        {u"SELECT * FROM Konto WHERE Nr BETWEEN 1 AND 'a'", types, 29},
        {u"SELECT * FROM Konto WHERE Nr = 1 AND NOT Name", types, 41},
        {u"SELECT * FROM Konto WHERE Name = {guid {6B29FC40-CA47-1067-B31D-00DD010662DA}}", types},
        {u"SELECT * FROM Konto WHERE Nr = 1 AND 'a'", types},
        {u"SELECT * FROM Konto WHERE Anlage LIKE 'a'", types},
        {u"SELECT * FROM Konto WHERE Nr LIKE 5", types},
        {u"SELECT * FROM Konto WHERE Anlage IS NULL AND Name = NULL", ""},
        // Statements that write are parsed, but a query refuses them.
        {u"UPDATE Konto SET Name = 'O'Neil' WHERE Nr = 1", inExpression(missing, "'O'Neil' WHERE Nr = 1")},
        {u"UPDATE Konto SET Name = 'a', Nr = 2 WHERE Nr = 1", readOnly},
        {u"DELETE FROM Konto WHERE Nr = 1", readOnly},
        {u"INSERT INTO Konto (Nr, Name) VALUES (1)",
         "-2147217900: Die Anzahl der Abfragewerte stimmt nicht mit der Anzahl der Zielfelder überein."},
        {u"INSERT INTO Konto (Nr, Name) VALUES (-1, 'a')", readOnly},
    };
    for (const auto& [statement, error, place, column] : cases) {
        const Thrown thrown = thrownBy(statement);
        EXPECT_EQ(thrown.error, error) << base::toUtf8(statement);
        EXPECT_EQ(place == 0 ? 0 : thrown.place, place) << base::toUtf8(statement);
        EXPECT_EQ(place == 0 ? base::Text() : thrown.column, column) << base::toUtf8(statement);
    }
}

TEST(StatementErrors, RefuseAColumnListWhereAllColumnsAreNeeded) {
    Database database = test::openSample(oneTable());
    ReadOperation operation = database.beginRead();
    try {
        executeSelect(operation, u"SELECT Nr FROM Konto");
        ADD_FAILURE();
    } catch (const StatementError& error) {
        EXPECT_EQ(error.place(), 7U);
    }
}

TEST(StatementErrors, LimitLengthAndDepth) {
    const auto repeated = [](base::TextView part, std::size_t count) {
        base::Text text;
        for (std::size_t i = 0; i < count; ++i)
            text += part;
        return text;
    };
    const base::Text start = u"SELECT * FROM Konto WHERE ";
    const std::string tooComplex = "-2147467259: Die Abfrage ist zu komplex.";
    EXPECT_EQ(thrownBy(start + repeated(u"(", 100) + u"Nr = 1" + repeated(u")", 100)).error, "");
    EXPECT_EQ(thrownBy(start + repeated(u"(", 101) + u"Nr = 1" + repeated(u")", 101)).error, tooComplex);
    EXPECT_EQ(thrownBy(start + repeated(u"NOT ", 15000) + u"Nr = 1").error, tooComplex);
    EXPECT_EQ(thrownBy(start + u"Nr" + repeated(u" = 1", 15000)).error, tooComplex);
    EXPECT_EQ(thrownBy(start + u"Nr = 1" + repeated(u" OR Nr=1", 7000)).error, "");
    EXPECT_EQ(thrownBy(start + repeated(u"--", 10000) + u"Nr").error.substr(0, 11), "-2147217900");
    EXPECT_EQ(thrownBy(start + u"Nr = 1" + repeated(u" ", 64000)).error, tooComplex);
}

}  // namespace
}  // namespace jet::sql
