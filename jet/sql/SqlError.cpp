#include "jet/sql/SqlError.h"

#include <cstdint>

#include "jet/Errors.h"
#include "jet/WriteErrors.h"

namespace jet::sql {

namespace {

constexpr std::int32_t kSyntax = -2147217900;            // 80040E14
constexpr std::int32_t kMissingParameter = -2147217904;  // 80040E10

}  // namespace

base::RuntimeError missingParameter() {
    return {kMissingParameter, u"Für mindestens einen erforderlichen Parameter wurde kein Wert angegeben."};
}

base::RuntimeError typesDoNotMatch() {
    return valueOfOtherType(WriteKind::Execute);
}

base::RuntimeError missingOperator(base::TextView expression) {
    return {kSyntax, u"Syntaxfehler (fehlender Operator) in Abfrageausdruck " + quoted(expression) + u"."};
}

base::RuntimeError unterminatedText(base::TextView expression) {
    return {kSyntax, u"Syntaxfehler in Zeichenfolge in Abfrageausdruck " + quoted(expression) + u"."};
}

base::RuntimeError brokenDate(base::TextView expression) {
    return {kSyntax, u"Syntaxfehler in Datum in Abfrageausdruck " + quoted(expression) + u"."};
}

base::RuntimeError brokenGuid(base::TextView expression) {
    return {kSyntax, u"Syntaxfehler in GUID in Abfrageausdruck " + quoted(expression) + u"."};
}

base::RuntimeError brokenClause(base::TextView clause) {
    return {kSyntax, u"Syntaxfehler in " + base::Text(clause) + u"."};
}

base::RuntimeError unknownColumnOfInsert(base::TextView column) {
    return {kSyntax, u"Die INSERT INTO-Anweisung enthält folgenden unbekannten Feldnamen: " + quoted(column) +
                         u". Stellen Sie sicher, dass Sie den Namen richtig eingegeben haben, und versuchen Sie es "
                         u"erneut."};
}

base::RuntimeError columnNamedTwice(base::TextView column) {
    return {kSyntax, u"Doppeltes Ausgabeziel " + quoted(column) + u"."};
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
    return {kSyntax, u"Dieser Teil der SQL-Anweisung wird nicht unterstützt: " + quoted(part) + u"."};
}

base::RuntimeError tooComplex() {
    return failure(u"Die Abfrage ist zu komplex.");
}

base::RuntimeError notUpdatable() {
    return readOnly(WriteKind::Execute);
}

}  // namespace jet::sql
