#pragma once

#include <cstddef>
#include <cstdint>

#include "base/RuntimeError.h"
#include "base/Text.h"
#include "jet/expression/StatementError.h"

/// The errors in expressions: one function for each, with the number and the text of the original engine. See
/// docs/file-format.md, "Statements".
namespace jet {

/// The number of all syntax errors, and of everything that is not supported.
inline constexpr std::int32_t kSyntaxError = -2147217900;  // 80040E14

/// -2147217904: a name that is not a column. The engine takes it for a parameter, which has no value.
/// @param table  written before the name; may be empty
/// @param place  of the name in the statement
StatementError missingParameter(base::TextView table, base::TextView name, std::size_t place);

/// -2147217913: values are compared that cannot be compared, for example a text and a number.
/// @param place  of the operator or value in the statement
StatementError typesDoNotMatch(std::size_t place);

/// kSyntaxError: the expression is broken. The text quotes the whole expression as it was typed.
base::RuntimeError missingOperator(base::TextView expression);
base::RuntimeError unterminatedText(base::TextView expression);
base::RuntimeError brokenDate(base::TextView expression);
base::RuntimeError brokenGuid(base::TextView expression);

/// kSyntaxError: valid for the original engine, but not supported by this one.
base::RuntimeError unsupported(base::TextView part);

/// -2147467259: the statement is too long, or nested too deeply.
base::RuntimeError tooComplex();

}  // namespace jet
