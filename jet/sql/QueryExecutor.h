#pragma once

#include "base/Text.h"
#include "jet/page/PageSource.h"
#include "jet/sql/ResultSet.h"
#include "jet/sql/Statement.h"

namespace jet::sql {

/// Carries out any SELECT that parseSelectList() reads: as executeSelect(), but with the columns wanted and their long
/// values only.
///
/// TOP without an order reads no further than its last row. With an order, rows equal to the last one come, too, as in
/// the original engine. COUNT(*) gives one row with one column, "Anzahl", and keeps no row in memory.
/// @throws base::RuntimeError: unknown table or column, types that do not match, damage
ResultSet executeQuery(PageSource& source, const Select& select);

/// Parses and carries out.
/// @throws base::RuntimeError also for the errors of parse(); for UPDATE, DELETE and INSERT notUpdatable()
ResultSet executeQuery(PageSource& source, base::TextView statement);

}  // namespace jet::sql
