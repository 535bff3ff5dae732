#pragma once

#include <cstddef>

#include "base/Text.h"
#include "jet/sql/Statement.h"

namespace jet::sql {

/// Units of a statement; the original engine's own limit.
inline constexpr std::size_t kMaxStatementLength = 64000;

/// Reads one statement; a semicolon may end it.
///
/// The first fault from the left decides the error: in 'O'Neil' the missing operator is met before the text
/// that is left open.
/// @throws StatementError as SqlError.h and ExpressionErrors.h list them; if the statement is too long, a RuntimeError
Statement parse(base::TextView statement);

}  // namespace jet::sql
