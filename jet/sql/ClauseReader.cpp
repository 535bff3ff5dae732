#include "jet/sql/ClauseReader.h"

#include <array>
#include <utility>

#include "jet/expression/ExpressionErrors.h"
#include "jet/sql/SqlError.h"

namespace jet::sql {

using base::TextView;

void failInClause(const TokenReader& reader, TextView clause) {
    // What the original engine's language allows in this place, but this engine does not support.
    constexpr std::array<TextView, 9> kLargerLanguage = {u",",     u".",     u"AS",     u"INNER", u"LEFT",
                                                         u"RIGHT", u"GROUP", u"HAVING", u"UNION"};
    for (const TextView part : kLargerLanguage)
        if (reader.at(part)) throw unsupported(reader.typed());
    throw brokenClause(clause);
}

base::Text takeName(TokenReader& reader, TextView clause) {
    if (!isName(reader.token())) failInClause(reader, clause);
    base::Text name = reader.token().text;
    reader.advance();
    return name;
}

ColumnName takeColumn(TokenReader& reader, TextView clause) {
    const std::size_t place = reader.token().begin;
    return {{}, takeName(reader, clause), place};
}

ColumnName takeQualifiedColumn(TokenReader& reader, TextView clause) {
    ColumnName column = takeColumn(reader, clause);
    if (reader.take(u".")) column.table = std::exchange(column.name, takeName(reader, clause));
    return column;
}

}  // namespace jet::sql
