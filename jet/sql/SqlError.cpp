#include "jet/sql/SqlError.h"

#include "jet/Errors.h"
#include "jet/WriteErrors.h"
#include "jet/expression/ExpressionErrors.h"

namespace jet::sql {

base::RuntimeError brokenClause(base::TextView clause) {
    return {kSyntaxError, u"Syntaxfehler in " + base::Text(clause) + u"."};
}

base::RuntimeError unknownColumnOfInsert(base::TextView column) {
    return {kSyntaxError,
            u"Die INSERT INTO-Anweisung enthält folgenden unbekannten Feldnamen: " + quoted(column) +
                u". Stellen Sie sicher, dass Sie den Namen richtig eingegeben haben, und versuchen Sie es "
                u"erneut."};
}

base::RuntimeError columnNamedTwice(base::TextView column) {
    return {kSyntaxError, u"Doppeltes Ausgabeziel " + quoted(column) + u"."};
}

base::RuntimeError valuesDoNotFitColumns() {
    return {kSyntaxError, u"Die Anzahl der Abfragewerte stimmt nicht mit der Anzahl der Zielfelder überein."};
}

base::RuntimeError otherStatement() {
    return {kSyntaxError,
            u"Unzulässige SQL-Anweisung; 'DELETE', 'INSERT', 'PROCEDURE', 'SELECT' oder 'UPDATE' erwartet."};
}

base::RuntimeError textBehindStatement() {
    return {kSyntaxError, u"Nach dem Ende der SQL-Anweisung wurden Zeichen gefunden."};
}

WriteRefused notUpdatable() {
    return readOnly();
}

}  // namespace jet::sql
