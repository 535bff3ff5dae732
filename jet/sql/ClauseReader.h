#pragma once

#include "base/Text.h"
#include "jet/expression/TokenReader.h"
#include "jet/sql/Statement.h"

/// What the parsers of statements share: names of tables and columns, and the fault of a clause. A clause is named as
/// in the error's text ("FROM-Klausel").
namespace jet::sql {

inline constexpr base::TextView kSelectStatement = u"SELECT-Anweisung";

/// To be called when the present token cannot follow.
[[noreturn]] void failInClause(const TokenReader& reader, base::TextView clause);

/// @throws base::RuntimeError unless the present token is a name
base::Text takeName(TokenReader& reader, base::TextView clause);

/// A column without a table in front of it.
ColumnName takeColumn(TokenReader& reader, base::TextView clause);

/// The same, or "table.column".
ColumnName takeQualifiedColumn(TokenReader& reader, base::TextView clause);

}  // namespace jet::sql
