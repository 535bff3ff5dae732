#include "jet/sql/SqlError.h"

#include <cstdint>

namespace jet::sql {

namespace {

constexpr std::int32_t kGeneral = -2147467259;           // 80004005
constexpr std::int32_t kSyntax = -2147217900;            // 80040E14
constexpr std::int32_t kMissingParameter = -2147217904;  // 80040E10
constexpr std::int32_t kTypeMismatch = -2147217913;      // 80040E07

base::Text join(base::TextView before, base::TextView middle, base::TextView after) {
    base::Text text(before);
    text += middle;
    text += after;
    return text;
}

}  // namespace

base::RuntimeError missingParameter() {
    return {kMissingParameter, u"Für mindestens einen erforderlichen Parameter wurde kein Wert angegeben."};
}

base::RuntimeError typesDoNotMatch() {
    return {kTypeMismatch, u"Datentypenkonflikt in Kriterienausdruck."};
}

base::RuntimeError missingOperator(base::TextView expression) {
    return {kSyntax, join(u"Syntaxfehler (fehlender Operator) in Abfrageausdruck '", expression, u"'.")};
}

base::RuntimeError unterminatedText(base::TextView expression) {
    return {kSyntax, join(u"Syntaxfehler in Zeichenfolge in Abfrageausdruck '", expression, u"'.")};
}

base::RuntimeError brokenDate(base::TextView expression) {
    return {kSyntax, join(u"Syntaxfehler in Datum in Abfrageausdruck '", expression, u"'.")};
}

base::RuntimeError brokenClause(base::TextView clause) {
    return {kSyntax, join(u"Syntaxfehler in ", clause, u".")};
}

base::RuntimeError unknownColumnOfInsert(base::TextView column) {
    return {kSyntax, join(u"Die INSERT INTO-Anweisung enthält folgenden unbekannten Feldnamen: '", column,
                          u"'. Stellen Sie sicher, dass Sie den Namen richtig eingegeben haben, und versuchen Sie es "
                          u"erneut.")};
}

base::RuntimeError columnNamedTwice(base::TextView column) {
    return {kSyntax, join(u"Doppeltes Ausgabeziel '", column, u"'.")};
}

base::RuntimeError valuesDoNotFitColumns() {
    return {kSyntax, u"Die Anzahl der Abfragewerte stimmt nicht mit der Anzahl der Zielfelder überein."};
}

base::RuntimeError otherStatement() {
    return {kSyntax, u"Unzulässige SQL-Anweisung; 'DELETE', 'INSERT', 'PROCEDURE', 'SELECT' oder 'UPDATE' erwartet."};
}

base::RuntimeError textBehindStatement() {
    return {kSyntax, u"Nach dem Ende der SQL-Anweisung wurden Zeichen gefunden."};
}

base::RuntimeError unsupported(base::TextView part) {
    return {kSyntax, join(u"Dieser Teil der SQL-Anweisung wird nicht unterstützt: '", part, u"'.")};
}

base::RuntimeError tooComplex() {
    return {kGeneral, u"Die Abfrage ist zu komplex."};
}

base::RuntimeError notUpdatable() {
    return {kGeneral, u"Operation muss eine aktualisierbare Abfrage verwenden."};
}

}  // namespace jet::sql
