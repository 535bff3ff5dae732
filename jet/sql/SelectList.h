#pragma once

#include "jet/expression/TokenReader.h"
#include "jet/sql/Statement.h"

namespace jet::sql {

/// Reads everything that may be between SELECT and FROM: [TOP number] * | column, ..., or COUNT(*). To be passed to
/// parse(); executeQuery() carries the statement out.
/// @throws base::RuntimeError if it is broken or not understood
void parseSelectList(TokenReader& reader, Select& select);

}  // namespace jet::sql
