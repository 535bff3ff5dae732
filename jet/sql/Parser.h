#pragma once

#include <cstddef>

#include "base/Text.h"
#include "jet/expression/TokenReader.h"
#include "jet/sql/Statement.h"

namespace jet::sql {

/// In UTF-16 units. The original engine has the same limit.
inline constexpr std::size_t kMaxStatementLength = 64000;

/// Reads the part between SELECT and FROM.
using ListParser = void (*)(TokenReader& reader, Select& select);

/// Accepts "*" alone, which is what executeSelect() can carry out. Thanks to this, a program that needs no more does
/// not contain the code for lists of columns.
/// @throws base::RuntimeError for everything else
void parseStar(TokenReader& reader, Select& select);

/// Reads one statement; a semicolon may end it.
///
/// The error is that of the first fault from the left: in 'O'Neil' this is the missing operator before Neil, not the
/// text after it, which has no end.
/// @param parseList  parseStar, or parseSelectList for everything that executeQuery() can carry out
/// @throws StatementError as SqlError.h and ExpressionErrors.h list them; if the statement is too long, a RuntimeError
Statement parse(base::TextView statement, ListParser parseList = parseStar);

}  // namespace jet::sql
