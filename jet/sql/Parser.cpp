#include "jet/sql/Parser.h"

#include <array>
#include <cstdint>
#include <optional>
#include <utility>

#include "jet/expression/ExpressionErrors.h"
#include "jet/expression/ExpressionParser.h"
#include "jet/expression/TokenReader.h"
#include "jet/sql/SqlError.h"

namespace jet::sql {

namespace {

using base::TextView;

constexpr TextView kSelectStatement = u"SELECT-Anweisung";
constexpr TextView kUpdateStatement = u"UPDATE-Anweisung";
constexpr TextView kInsertStatement = u"INSERT INTO-Anweisung";
constexpr TextView kFromClause = u"FROM-Klausel";
constexpr TextView kWhereClause = u"WHERE-Klausel";
constexpr TextView kOrderClause = u"ORDER BY-Klausel";

/// What may follow a table or an order in a larger language than ours.
constexpr std::array<TextView, 9> kLargerLanguage = {u",",     u".",     u"AS",     u"INNER", u"LEFT",
                                                     u"RIGHT", u"GROUP", u"HAVING", u"UNION"};

/// Words in front of the columns of a larger language than ours.
constexpr std::array<TextView, 4> kLargerSelect = {u"ALL", u"DISTINCT", u"DISTINCTROW", u"PERCENT"};

class StatementParser {
public:
    explicit StatementParser(TextView statement) : reader_(statement) {}

    Statement parse();

    /// Where the parser has got to.
    std::size_t place() const { return reader_.token().begin; }

private:
    Statement parseBody();
    Select parseSelect();
    std::optional<std::uint32_t> parseTop();
    bool parseCount();
    std::vector<ColumnName> parseColumns();
    ColumnName parseColumn(TextView clause);
    Update parseUpdate();
    Delete parseDelete();
    Insert parseInsert();
    std::optional<Expression> parseWhere();
    std::vector<OrderItem> parseOrder();
    OrderItem parseOrderItem();

    bool isNext(TextView wordOrSymbol) const;
    bool atClauseEnd() const { return reader_.atEnd() || reader_.at(u";") || reader_.at(u"ORDER"); }
    void expect(TextView wordOrSymbol, TextView clause);
    ColumnName takeColumn(TextView clause);
    base::Text takeName(TextView clause);
    [[noreturn]] void fail(TextView clause) const;

    TokenReader reader_;
};

Statement StatementParser::parse() {
    Statement statement = parseBody();
    if (reader_.take(u";") && !reader_.atEnd()) throw textBehindStatement();
    return statement;
}

Statement StatementParser::parseBody() {
    if (reader_.take(u"SELECT")) return parseSelect();
    if (reader_.take(u"UPDATE")) return parseUpdate();
    if (reader_.take(u"DELETE")) return parseDelete();
    if (reader_.take(u"INSERT")) return parseInsert();
    throw otherStatement();
}

Select StatementParser::parseSelect() {
    Select select;
    select.top = parseTop();
    select.countsRows = !select.top && parseCount();
    if (!select.countsRows && !reader_.take(u"*")) select.columns = parseColumns();
    expect(u"FROM", kFromClause);
    select.table = takeName(kFromClause);
    select.where = parseWhere();
    if (select.countsRows && reader_.at(u"ORDER")) throw unsupported(reader_.typed());
    select.order = parseOrder();
    return select;
}

/// A column may be called Top: the word limits the rows only in front of a number.
std::optional<std::uint32_t> StatementParser::parseTop() {
    TokenReader ahead = reader_;
    if (!ahead.take(u"TOP") || ahead.token().kind != TokenKind::Literal) return std::nullopt;
    reader_ = ahead;
    const auto* number = std::get_if<std::int32_t>(&reader_.token().value);
    if (number == nullptr) fail(kSelectStatement);
    reader_.advance();
    return static_cast<std::uint32_t>(*number);
}

bool StatementParser::parseCount() {
    TokenReader ahead = reader_;
    const bool found = ahead.take(u"COUNT") && ahead.take(u"(") && ahead.take(u"*") && ahead.take(u")");
    if (found) reader_ = ahead;
    return found;
}

std::vector<ColumnName> StatementParser::parseColumns() {
    std::vector<ColumnName> columns;
    do {
        for (const TextView word : kLargerSelect)
            if (reader_.at(word) && !isNext(u",") && !isNext(u"FROM")) throw unsupported(reader_.typed());
        const bool isComputed = reader_.token().kind == TokenKind::Literal || reader_.at(u"*") || reader_.at(u"(") ||
                                reader_.at(u"-") || isNext(u"(");
        if (isComputed) throw unsupported(reader_.typed());
        columns.push_back(parseColumn(kSelectStatement));
    } while (reader_.take(u","));
    if (reader_.token().kind == TokenKind::Symbol && !reader_.at(u";") && !reader_.at(u")"))
        throw unsupported(reader_.typed());
    return columns;
}

ColumnName StatementParser::parseColumn(TextView clause) {
    ColumnName column = takeColumn(clause);
    if (reader_.take(u".")) column.table = std::exchange(column.name, takeName(clause));
    return column;
}

Update StatementParser::parseUpdate() {
    Update update;
    update.table = takeName(kUpdateStatement);
    expect(u"SET", kUpdateStatement);
    do {
        ColumnName column = takeColumn(kUpdateStatement);
        expect(u"=", kUpdateStatement);
        ExpressionParser expression(reader_);
        update.values.emplace_back(std::move(column), expression.parse());
        if (!reader_.at(u",") && !reader_.at(u"WHERE") && !atClauseEnd()) expression.fail();
    } while (reader_.take(u","));
    update.where = parseWhere();
    if (reader_.at(u"ORDER")) fail(kUpdateStatement);
    return update;
}

Delete StatementParser::parseDelete() {
    Delete statement;
    reader_.take(u"*");
    expect(u"FROM", kFromClause);
    statement.table = takeName(kFromClause);
    statement.where = parseWhere();
    if (reader_.at(u"ORDER")) fail(kFromClause);
    return statement;
}

Insert StatementParser::parseInsert() {
    Insert insert;
    expect(u"INTO", kInsertStatement);
    insert.table = takeName(kInsertStatement);
    if (reader_.take(u"(")) {
        do {
            insert.columns.push_back(takeColumn(kInsertStatement));
        } while (reader_.take(u","));
        expect(u")", kInsertStatement);
    }
    expect(u"VALUES", kInsertStatement);
    expect(u"(", kInsertStatement);
    do {
        ExpressionParser expression(reader_);
        insert.values.push_back(expression.parse());
        if (!reader_.at(u",") && !reader_.at(u")")) expression.fail();
    } while (reader_.take(u","));
    reader_.advance();
    if (!reader_.atEnd() && !reader_.at(u";")) fail(kInsertStatement);
    const bool counted = insert.columns.empty() || insert.columns.size() == insert.values.size();
    if (!counted) throw valuesDoNotFitColumns();
    return insert;
}

std::optional<Expression> StatementParser::parseWhere() {
    if (!reader_.take(u"WHERE")) {
        if (!atClauseEnd()) fail(kFromClause);
        return std::nullopt;
    }
    if (atClauseEnd()) throw brokenClause(kWhereClause);
    ExpressionParser expression(reader_);
    Expression where = expression.parse();
    if (!atClauseEnd()) expression.fail();
    return where;
}

std::vector<OrderItem> StatementParser::parseOrder() {
    std::vector<OrderItem> order;
    if (!reader_.take(u"ORDER")) return order;
    expect(u"BY", kOrderClause);
    do {
        order.push_back(parseOrderItem());
    } while (reader_.take(u","));
    if (!reader_.atEnd() && !reader_.at(u";")) fail(kOrderClause);
    return order;
}

OrderItem StatementParser::parseOrderItem() {
    OrderItem item;
    item.column = parseColumn(kOrderClause);
    item.descending = reader_.take(u"DESC");
    if (!item.descending) reader_.take(u"ASC");
    return item;
}

bool StatementParser::isNext(TextView wordOrSymbol) const {
    TokenReader ahead = reader_;
    ahead.advance();
    return ahead.at(wordOrSymbol);
}

void StatementParser::expect(TextView wordOrSymbol, TextView clause) {
    if (!reader_.take(wordOrSymbol)) fail(clause);
}

ColumnName StatementParser::takeColumn(TextView clause) {
    const std::size_t begin = place();
    return {{}, takeName(clause), begin};
}

base::Text StatementParser::takeName(TextView clause) {
    if (!isName(reader_.token())) fail(clause);
    base::Text name = reader_.token().text;
    reader_.advance();
    return name;
}

void StatementParser::fail(TextView clause) const {
    for (const TextView part : kLargerLanguage)
        if (reader_.at(part)) throw unsupported(reader_.typed());
    throw brokenClause(clause);
}

}  // namespace

Statement parse(base::TextView statement) {
    if (statement.size() > kMaxStatementLength) throw tooComplex();
    StatementParser parser(statement);
    try {
        return parser.parse();
    } catch (const StatementError&) {
        throw;
    } catch (const base::RuntimeError& error) {
        throw StatementError(error, parser.place());
    }
}

}  // namespace jet::sql
