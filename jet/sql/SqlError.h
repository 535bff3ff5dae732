#pragma once

#include "base/RuntimeError.h"
#include "base/Text.h"

/// What the engine says about statements: one function a fault, each with the number and the wording that
/// users of such files know. Those of expressions are jet/expression/ExpressionErrors.h's. See docs/file-format.md,
/// "Statements".
namespace jet::sql {

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

/// -2147467259: UPDATE, DELETE or INSERT where rows alone are asked for or nothing can be written.
base::RuntimeError notUpdatable();

}  // namespace jet::sql
