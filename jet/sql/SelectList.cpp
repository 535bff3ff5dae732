#include "jet/sql/SelectList.h"

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "jet/expression/ExpressionErrors.h"
#include "jet/sql/ClauseReader.h"

namespace jet::sql {

namespace {

using base::TextView;

/// Words of the original engine's language before the columns that this engine does not support.
constexpr std::array<TextView, 4> kLargerSelect = {u"ALL", u"DISTINCT", u"DISTINCTROW", u"PERCENT"};

bool isNext(TokenReader reader, TextView wordOrSymbol) {
    reader.advance();
    return reader.at(wordOrSymbol);
}

/// TOP is a keyword only before a number, because a column may have this name.
std::optional<std::uint32_t> parseTop(TokenReader& reader) {
    TokenReader ahead = reader;
    if (!ahead.take(u"TOP") || ahead.token().kind != TokenKind::Literal) return std::nullopt;
    reader = ahead;
    const auto* number = std::get_if<std::int32_t>(&reader.token().value);
    if (number == nullptr) failInClause(reader, kSelectStatement);
    const auto top = static_cast<std::uint32_t>(*number);
    reader.advance();
    return top;
}

bool takeCount(TokenReader& reader) {
    TokenReader ahead = reader;
    const bool found = ahead.take(u"COUNT") && ahead.take(u"(") && ahead.take(u"*") && ahead.take(u")");
    if (found) reader = ahead;
    return found;
}

ColumnName parseItem(TokenReader& reader) {
    for (const TextView word : kLargerSelect)
        if (reader.at(word) && !isNext(reader, u",") && !isNext(reader, u"FROM")) throw unsupported(reader.typed());
    const bool isComputed = reader.token().kind == TokenKind::Literal || reader.at(u"*") || reader.at(u"(") ||
                            reader.at(u"-") || isNext(reader, u"(");
    if (isComputed) throw unsupported(reader.typed());
    return takeQualifiedColumn(reader, kSelectStatement);
}

std::vector<ColumnName> parseColumns(TokenReader& reader) {
    std::vector<ColumnName> columns;
    do {
        columns.push_back(parseItem(reader));
    } while (reader.take(u","));
    if (reader.token().kind == TokenKind::Symbol && !reader.at(u";") && !reader.at(u")"))
        throw unsupported(reader.typed());
    return columns;
}

}  // namespace

void parseSelectList(TokenReader& reader, Select& select) {
    select.top = parseTop(reader);
    select.countsRows = !select.top && takeCount(reader);
    if (!select.countsRows && !reader.take(u"*")) select.columns = parseColumns(reader);
}

}  // namespace jet::sql
