#pragma once

#include "base/Text.h"
#include "jet/page/PageSource.h"
#include "jet/sql/ResultSet.h"
#include "jet/sql/Statement.h"

namespace jet::sql {

/// Carries out any SELECT that parseSelectList() can read. Like executeSelect(), but the result has only the columns in
/// the list, and only their long values are read.
///
/// TOP without ORDER BY stops reading after its last row. With ORDER BY the result also has the rows that are equal to
/// the last one, as in the original engine. The result of COUNT(*) is one row with one column, "Anzahl"; no row is kept
/// in memory.
/// @throws base::RuntimeError: unknown table or column, types that do not match, damage
ResultSet executeQuery(PageSource& source, const Select& select);

/// Parses the statement and carries it out.
/// @throws base::RuntimeError also for the errors of parse(); for UPDATE, DELETE and INSERT notUpdatable()
ResultSet executeQuery(PageSource& source, base::TextView statement);

}  // namespace jet::sql
