#pragma once

#include <vector>

#include "jet/page/PageSource.h"
#include "jet/sql/ResultSet.h"
#include "jet/sql/RowKeys.h"
#include "jet/sql/RowSearch.h"
#include "jet/sql/Statement.h"
#include "jet/table/Table.h"

namespace jet::sql {

/// Carries out a SELECT * without TOP. All rows are read at once, including long values.
///
/// Without ORDER BY the rows come in the order of the file. So do rows that are equal for ORDER BY.
///
/// An index is used only if the result is the same as without it: for a condition that requires that a column is equal
/// to a constant (see RowSearch), and for ORDER BY one column. For ORDER BY all text keys in the index must be certain,
/// the index must have the rows with null, and each row of the table must be found in it exactly once.
/// @throws base::RuntimeError: unknown table or column, types that do not match, damage
ResultSet executeSelect(PageSource& source, const Select& statement);

/// Parses the statement and carries it out.
/// @throws base::RuntimeError also for the errors of parse(); for UPDATE, DELETE and INSERT notUpdatable()
ResultSet executeSelect(PageSource& source, base::TextView statement);

/// Appends all rows of the search and puts them in order, with an index if that gives the same result.
/// @param order  positions of columns in `rows`
/// @param rows   an empty set
void readRows(const Table& table, const RowSearch& search, const std::vector<OrderColumn>& order, ResultSet& rows);

/// The position of a column in `columns`.
/// @param columns  all columns of the table, in the order of SELECT *
/// @throws StatementError if the table has no column of this name
std::size_t placeOf(const ColumnName& name, const Table& table, const std::vector<const Column*>& columns);

}  // namespace jet::sql
