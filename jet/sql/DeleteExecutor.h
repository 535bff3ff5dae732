#pragma once

#include <cstdint>

#include "jet/change/TableWriter.h"
#include "jet/sql/Statement.h"

namespace jet::sql {

/// Carries out a DELETE. First finds the rows, with an index if one fits, then removes them.
/// @param writer  of the table in the statement; the caller drops its transaction if this throws
/// @return the number of rows for which the condition is true; rows that relationships delete with them do not count
/// @throws base::RuntimeError: unknown column, types that do not match; all that TableWriter throws
std::int32_t executeDelete(TableWriter& writer, const Delete& statement);

}  // namespace jet::sql
