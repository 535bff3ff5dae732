#pragma once

#include "base/RuntimeError.h"
#include "base/Text.h"
#include "jet/Errors.h"

/// The errors in statements: one function for each, with the number and the text of the original engine. Errors in
/// expressions are in jet/expression/ExpressionErrors.h. See docs/file-format.md, "Statements".
namespace jet::sql {

/// -2147217900: a clause or statement ("FROM-Klausel", "UPDATE-Anweisung") is broken.
base::RuntimeError brokenClause(base::TextView clause);

/// -2147217900: an INSERT names a column that the table lacks, or a column twice, or has more or fewer values than
/// columns.
base::RuntimeError unknownColumnOfInsert(base::TextView column);
base::RuntimeError columnNamedTwice(base::TextView column);
base::RuntimeError valuesDoNotFitColumns();

/// -2147217900: the text does not begin with a known statement.
base::RuntimeError otherStatement();

/// -2147217900: there is text after the semicolon.
base::RuntimeError textBehindStatement();

/// -2147467259: UPDATE, DELETE or INSERT where rows alone are asked for or nothing can be written.
WriteRefused notUpdatable();

}  // namespace jet::sql
