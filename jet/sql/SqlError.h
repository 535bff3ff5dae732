#pragma once

#include "base/RuntimeError.h"
#include "base/Text.h"

/// What the engine says about statements: one function a fault, each with the number and the wording that
/// users of such files know. See docs/file-format.md, "Statements".
namespace jet::sql {

/// -2147217904: a name that is no column counts as a parameter, and nobody gives it a value.
base::RuntimeError missingParameter();

/// -2147217913: two things are compared that have no common order, as text and number.
base::RuntimeError typesDoNotMatch();

/// -2147217900: the expression is broken. Each quotes it whole, as it was typed.
base::RuntimeError missingOperator(base::TextView expression);
base::RuntimeError unterminatedText(base::TextView expression);
base::RuntimeError brokenDate(base::TextView expression);
base::RuntimeError brokenGuid(base::TextView expression);

/// -2147217900: a clause or statement ("FROM-Klausel", "UPDATE-Anweisung") is broken.
base::RuntimeError brokenClause(base::TextView clause);

/// -2147217900: an INSERT names a column that the table has not, or one column twice; values and columns differ in
/// number.
base::RuntimeError unknownColumnOfInsert(base::TextView column);
base::RuntimeError columnNamedTwice(base::TextView column);
base::RuntimeError valuesDoNotFitColumns();

/// -2147217900: the text begins with none of the statements there are.
base::RuntimeError otherStatement();

/// -2147217900: something stands behind the semicolon.
base::RuntimeError textBehindStatement();

/// -2147217900: valid elsewhere, but not understood by this engine.
base::RuntimeError unsupported(base::TextView part);

/// -2147467259: longer or deeper than the engine takes.
base::RuntimeError tooComplex();

/// -2147467259: UPDATE, DELETE or INSERT where rows alone are asked for or nothing can be written.
base::RuntimeError notUpdatable();

}  // namespace jet::sql
