#pragma once

#include <cstdint>

#include "jet/change/TableWriter.h"
#include "jet/sql/Statement.h"

namespace jet::sql {

/// Carries out an INSERT of one row. What it does not name has its default, an auto number is the next one.
/// @param writer  of the statement's table; its transaction is to be dropped if this throws
/// @return 1, the number of rows added
/// @throws base::RuntimeError: unknown column, types that do not match; all that TableWriter throws
std::int32_t executeInsert(TableWriter& writer, const Insert& statement);

}  // namespace jet::sql
