#pragma once

#include "jet/expression/TokenReader.h"
#include "jet/sql/Statement.h"

namespace jet::sql {

/// Reads all that a SELECT may ask for: [TOP number] * | column, ..., or COUNT(*). For parse(); executeQuery() carries
/// it out.
/// @throws base::RuntimeError if it is broken or not understood
void parseSelectList(TokenReader& reader, Select& select);

}  // namespace jet::sql
