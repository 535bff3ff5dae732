#pragma once

#include "base/Text.h"
#include "jet/sql/Statement.h"
#include "tools/kontodb/CommandLine.h"
#include "tools/kontodb/Console.h"

namespace kontodb {

/// The statement that an operand is; for "-" the whole standard input.
/// @throws UsageError if the input holds none, is too long, is not UTF-8 or was wanted for the password too
base::Text statementOf(const CommandLine& line, std::size_t operand, Console& console);

/// The content of a text file; for "-" the whole standard input.
/// @throws UsageError if it is too long, is not UTF-8 or was wanted for the password too
/// @throws base::RuntimeError if the file cannot be read
base::Text statementsIn(const base::Text& path, const CommandLine& line, Console& console);

/// Says that LIKE has other wildcards here than in Access's own windows, if a pattern uses those and may have missed
/// rows because of that, or with NOT have found too many.
/// @return whether it said so
bool hintAtWildcards(const jet::sql::Statement& statement, bool foundNothing, Console& console);

}  // namespace kontodb
