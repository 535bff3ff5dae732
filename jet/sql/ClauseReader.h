#pragma once

#include "base/Text.h"
#include "jet/expression/TokenReader.h"
#include "jet/sql/Statement.h"

/// What the parsers of statements share: reading names of tables and columns, and the syntax error of a clause. A
/// clause is named as in the text of the error ("FROM-Klausel").
namespace jet::sql {

inline constexpr base::TextView kSelectStatement = u"SELECT-Anweisung";

/// Throws the syntax error for the current token, which is not allowed here.
[[noreturn]] void failInClause(const TokenReader& reader, base::TextView clause);

/// @throws base::RuntimeError if the current token is no name
base::Text takeName(TokenReader& reader, base::TextView clause);

/// A column name without a table.
ColumnName takeColumn(TokenReader& reader, base::TextView clause);

/// "column" or "table.column".
ColumnName takeQualifiedColumn(TokenReader& reader, base::TextView clause);

}  // namespace jet::sql
