#pragma once

#include <vector>

#include "jet/page/PageSource.h"
#include "jet/sql/ResultSet.h"
#include "jet/sql/RowKeys.h"
#include "jet/sql/RowSearch.h"
#include "jet/sql/Statement.h"
#include "jet/table/Table.h"

namespace jet::sql {

/// Carries out a SELECT * without TOP: all of its rows are read at once, long values included.
///
/// Without an order rows come as they lie in the file, and so do rows that an order does not tell apart.
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

/// Puts all rows of the search into the set, in the order of its columns; through an index where that gives the same.
/// @param rows   empty
/// @param order  places in the set
void readRows(const Table& table, const RowSearch& search, const std::vector<OrderColumn>& order, ResultSet& rows);

/// The place of the column that is named.
/// @param columns  of the table in the order of SELECT *
/// @throws StatementError if it has none of this name
std::size_t placeOf(const ColumnName& name, const Table& table, const std::vector<const Column*>& columns);

}  // namespace jet::sql
