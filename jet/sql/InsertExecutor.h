#pragma once

#include <cstdint>

#include "jet/change/TableWriter.h"
#include "jet/sql/Statement.h"

namespace jet::sql {

/// Carries out an INSERT of one row. A column that it does not name gets its default, an auto number the next number.
/// @param writer  of the table in the statement; the caller drops its transaction if this throws
/// @return 1, the number of rows added
/// @throws base::RuntimeError: unknown column, types that do not match; all that TableWriter throws
std::int32_t executeInsert(TableWriter& writer, const Insert& statement);

}  // namespace jet::sql
