#pragma once

#include <cstdint>

#include "jet/change/TableWriter.h"
#include "jet/sql/Statement.h"

namespace jet::sql {

/// Carries out a DELETE. The rows are found first, through an index where one fits, then removed.
/// @param writer  of the statement's table; its transaction is to be dropped if this throws
/// @return the number of rows that the condition names; those of other tables that relationships delete along do not
/// count
/// @throws base::RuntimeError: unknown column, types that do not match; all that TableWriter throws
std::int32_t executeDelete(TableWriter& writer, const Delete& statement);

}  // namespace jet::sql
