#pragma once

#include <cstddef>
#include <cstdint>

#include "base/RuntimeError.h"
#include "base/Text.h"
#include "jet/expression/StatementError.h"

/// What the engine says about expressions: one function a fault, each with the number and the wording that users of
/// such files know. See docs/file-format.md, "Statements".
namespace jet {

/// The number of all that is broken in a text, or not understood.
inline constexpr std::int32_t kSyntaxError = -2147217900;  // 80040E14

/// -2147217904: a name that is no column counts as a parameter, and nobody gives it a value.
/// @param table  what the name is qualified with; may be empty
/// @param place  of the name in the statement
StatementError missingParameter(base::TextView table, base::TextView name, std::size_t place);

/// -2147217913: two things are compared that have no common order, as text and number.
/// @param place  of the operator or value in the statement
StatementError typesDoNotMatch(std::size_t place);

/// kSyntaxError: the expression is broken. Each quotes it whole, as it was typed.
base::RuntimeError missingOperator(base::TextView expression);
base::RuntimeError unterminatedText(base::TextView expression);
base::RuntimeError brokenDate(base::TextView expression);
base::RuntimeError brokenGuid(base::TextView expression);

/// kSyntaxError: valid elsewhere, but not understood by this engine.
base::RuntimeError unsupported(base::TextView part);

/// -2147467259: longer or deeper than the engine takes.
base::RuntimeError tooComplex();

}  // namespace jet
