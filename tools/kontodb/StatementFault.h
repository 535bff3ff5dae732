#pragma once

#include <cstddef>
#include <string>

#include "base/Text.h"
#include "jet/expression/StatementError.h"
#include "jet/page/PageSource.h"
#include "jet/sql/Statement.h"

namespace kontodb {

/// The line of a text that holds the place; if it is long, a part of it.
/// @param place     offset in units, at most the length of the text
/// @param hasCaret  a second line has a caret under the place
std::string shownLine(base::TextView text, std::size_t place, bool hasCaret);

/// The number of the line that holds the place, from 1.
std::size_t lineNumber(base::TextView text, std::size_t place);

/// What to do about a fault that the parser found; empty if it is not known.
std::string adviceOnSyntax(base::TextView statement, const jet::StatementError& error);

/// What to do about a fault that was found when names were looked up in a file; empty if it is not known.
std::string adviceOnNames(const jet::sql::Statement& statement, const jet::StatementError& error,
                          jet::PageSource& source);

}  // namespace kontodb
