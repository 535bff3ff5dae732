#pragma once

#include <cstddef>

#include "base/Text.h"
#include "jet/expression/TokenReader.h"
#include "jet/sql/Statement.h"

namespace jet::sql {

/// Units of a statement; the original engine's own limit.
inline constexpr std::size_t kMaxStatementLength = 64000;

/// Reads what stands between SELECT and FROM.
using ListParser = void (*)(TokenReader& reader, Select& select);

/// "*" alone, which is what executeSelect() carries out. A program that needs no more does not contain the rest.
/// @throws base::RuntimeError for all else
void parseStar(TokenReader& reader, Select& select);

/// Reads one statement; a semicolon may end it.
///
/// The first fault from the left decides the error: in 'O'Neil' the missing operator is met before the text
/// that is left open.
/// @param parseList  parseStar, or parseSelectList for all that can be asked for
/// @throws StatementError as SqlError.h and ExpressionErrors.h list them; if the statement is too long, a RuntimeError
Statement parse(base::TextView statement, ListParser parseList = parseStar);

}  // namespace jet::sql
