#pragma once

#include <cstdint>

#include "jet/change/TableWriter.h"
#include "jet/sql/Statement.h"

namespace jet::sql {

/// Carries out an UPDATE. The rows are found first, through an index where one fits, then changed; each value is
/// computed from what its row held before.
/// @param writer  of the statement's table; its transaction is to be dropped if this throws
/// @return the number of rows changed, those included that already had the values
/// @throws base::RuntimeError: unknown column, types that do not match; all that TableWriter throws
std::int32_t executeUpdate(TableWriter& writer, const Update& statement);

}  // namespace jet::sql
