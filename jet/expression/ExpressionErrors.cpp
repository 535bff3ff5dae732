#include "jet/expression/ExpressionErrors.h"

#include "jet/Errors.h"
#include "jet/WriteErrors.h"

namespace jet {

namespace {

constexpr std::int32_t kMissingParameter = -2147217904;  // 80040E10

}  // namespace

StatementError missingParameter(base::TextView table, base::TextView name, std::size_t place) {
    base::Text typed(table);
    if (!table.empty()) typed += u'.';
    return {{kMissingParameter, u"Für mindestens einen erforderlichen Parameter wurde kein Wert angegeben."},
            place,
            typed.append(name)};
}

StatementError typesDoNotMatch(std::size_t place) {
    const WriteRefused error = valueOfOtherType();
    return {{error.number(), error.description()}, place};
}

base::RuntimeError missingOperator(base::TextView expression) {
    return {kSyntaxError, u"Syntaxfehler (fehlender Operator) in Abfrageausdruck " + quoted(expression) + u"."};
}

base::RuntimeError unterminatedText(base::TextView expression) {
    return {kSyntaxError, u"Syntaxfehler in Zeichenfolge in Abfrageausdruck " + quoted(expression) + u"."};
}

base::RuntimeError brokenDate(base::TextView expression) {
    return {kSyntaxError, u"Syntaxfehler in Datum in Abfrageausdruck " + quoted(expression) + u"."};
}

base::RuntimeError brokenGuid(base::TextView expression) {
    return {kSyntaxError, u"Syntaxfehler in GUID in Abfrageausdruck " + quoted(expression) + u"."};
}

base::RuntimeError unsupported(base::TextView part) {
    return {kSyntaxError, u"Dieser Teil der SQL-Anweisung wird nicht unterstützt: " + quoted(part) + u"."};
}

base::RuntimeError tooComplex() {
    return failure(u"Die Abfrage ist zu komplex.");
}

}  // namespace jet
