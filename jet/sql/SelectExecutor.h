#pragma once

#include "jet/page/PageSource.h"
#include "jet/sql/ResultSet.h"
#include "jet/sql/Statement.h"
#include "jet/table/Table.h"

namespace jet::sql {

/// Carries out a SELECT: all of its rows are read at once, with the long values of the columns wanted.
///
/// Without an order rows come as they lie in the file, and so do rows that an order does not tell apart.
/// TOP without an order reads no further than its last row. With an order, rows equal to the last one come, too, as in
/// the original engine. COUNT(*) gives one row with one column, "Anzahl", and keeps no row in memory.
///
/// An index is used where it gives the very same rows in the very same order: for a condition that wants a
/// column to be equal to a constant (the rest of the condition is then asked of each row found), and for an
/// order by one column. An order walks the index only if all text keys in it are certain and it knows the
/// rows with null, and the walk must meet every row of the table exactly once.
/// @throws base::RuntimeError: unknown table or column, types that do not match, damage
ResultSet executeSelect(PageSource& source, const Select& statement);

/// Parses and carries out.
/// @throws base::RuntimeError also for the errors of parse(); for UPDATE, DELETE and INSERT notUpdatable()
ResultSet executeSelect(PageSource& source, base::TextView statement);

}  // namespace jet::sql
