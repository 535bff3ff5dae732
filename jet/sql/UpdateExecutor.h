#pragma once

#include <cstdint>

#include "jet/change/TableWriter.h"
#include "jet/sql/Statement.h"

namespace jet::sql {

/// Carries out an UPDATE. First finds the rows, with an index if one fits, then changes them. Each new value is
/// computed from the old values of the row.
/// @param writer  of the table in the statement; the caller drops its transaction if this throws
/// @return the number of rows for which the condition is true, including those that already had the new values
/// @throws base::RuntimeError: unknown column, types that do not match; all that TableWriter throws
std::int32_t executeUpdate(TableWriter& writer, const Update& statement);

}  // namespace jet::sql
