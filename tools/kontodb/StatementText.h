#pragma once

#include "base/Text.h"
#include "tools/kontodb/CommandLine.h"
#include "tools/kontodb/Console.h"

namespace kontodb {

/// The statement that an operand is; for "-" the whole standard input.
/// @throws UsageError if the input holds none, is too long or was wanted for the password too
base::Text statementOf(const CommandLine& line, std::size_t operand, Console& console);

/// Tells who found no row that LIKE has other wildcards here than in Access's own windows, if the statement looks as if
/// that were the reason.
void hintAtWildcards(base::TextView statement, Console& console);

}  // namespace kontodb
