#include "jet/sql/Parser.h"

#include <optional>
#include <utility>

#include "jet/expression/ExpressionErrors.h"
#include "jet/expression/ExpressionParser.h"
#include "jet/expression/TokenReader.h"
#include "jet/sql/ClauseReader.h"
#include "jet/sql/SqlError.h"

namespace jet::sql {

namespace {

using base::TextView;

constexpr TextView kUpdateStatement = u"UPDATE-Anweisung";
constexpr TextView kInsertStatement = u"INSERT INTO-Anweisung";
constexpr TextView kFromClause = u"FROM-Klausel";
constexpr TextView kWhereClause = u"WHERE-Klausel";
constexpr TextView kOrderClause = u"ORDER BY-Klausel";

class StatementParser {
public:
    StatementParser(TextView statement, ListParser parseList) : reader_(statement), parseList_(parseList) {}

    Statement parse();

    /// Where the current token begins: after an error, the place of the fault.
    std::size_t place() const { return reader_.token().begin; }

private:
    Statement parseBody();
    Select parseSelect();
    Update parseUpdate();
    Delete parseDelete();
    Insert parseInsert();
    std::optional<Expression> parseWhere();
    std::vector<OrderItem> parseOrder();
    OrderItem parseOrderItem();

    bool atClauseEnd() const { return reader_.atEnd() || reader_.at(u";") || reader_.at(u"ORDER"); }
    void expect(TextView wordOrSymbol, TextView clause);

    TokenReader reader_;
    ListParser parseList_;
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
    parseList_(reader_, select);
    expect(u"FROM", kFromClause);
    select.table = takeName(reader_, kFromClause);
    select.where = parseWhere();
    if (select.countsRows && reader_.at(u"ORDER")) throw unsupported(reader_.typed());
    select.order = parseOrder();
    return select;
}

Update StatementParser::parseUpdate() {
    Update update;
    update.table = takeName(reader_, kUpdateStatement);
    expect(u"SET", kUpdateStatement);
    do {
        ColumnName column = takeColumn(reader_, kUpdateStatement);
        expect(u"=", kUpdateStatement);
        ExpressionParser expression(reader_);
        update.values.emplace_back(std::move(column), expression.parse());
        if (!reader_.at(u",") && !reader_.at(u"WHERE") && !atClauseEnd()) expression.fail();
    } while (reader_.take(u","));
    update.where = parseWhere();
    if (reader_.at(u"ORDER")) failInClause(reader_, kUpdateStatement);
    return update;
}

Delete StatementParser::parseDelete() {
    Delete statement;
    reader_.take(u"*");
    expect(u"FROM", kFromClause);
    statement.table = takeName(reader_, kFromClause);
    statement.where = parseWhere();
    if (reader_.at(u"ORDER")) failInClause(reader_, kFromClause);
    return statement;
}

Insert StatementParser::parseInsert() {
    Insert insert;
    expect(u"INTO", kInsertStatement);
    insert.table = takeName(reader_, kInsertStatement);
    if (reader_.take(u"(")) {
        do {
            insert.columns.push_back(takeColumn(reader_, kInsertStatement));
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
    if (!reader_.atEnd() && !reader_.at(u";")) failInClause(reader_, kInsertStatement);
    const bool counted = insert.columns.empty() || insert.columns.size() == insert.values.size();
    if (!counted) throw valuesDoNotFitColumns();
    return insert;
}

std::optional<Expression> StatementParser::parseWhere() {
    if (!reader_.take(u"WHERE")) {
        if (!atClauseEnd()) failInClause(reader_, kFromClause);
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
    if (!reader_.atEnd() && !reader_.at(u";")) failInClause(reader_, kOrderClause);
    return order;
}

OrderItem StatementParser::parseOrderItem() {
    OrderItem item;
    item.column = takeQualifiedColumn(reader_, kOrderClause);
    item.descending = reader_.take(u"DESC");
    if (!item.descending) reader_.take(u"ASC");
    return item;
}

void StatementParser::expect(TextView wordOrSymbol, TextView clause) {
    if (!reader_.take(wordOrSymbol)) failInClause(reader_, clause);
}

}  // namespace

void parseStar(TokenReader& reader, Select&) {
    if (reader.take(u"*")) return;
    if (reader.atEnd() || reader.at(u";") || reader.at(u"ORDER")) failInClause(reader, kSelectStatement);
    throw unsupported(reader.typed());
}

Statement parse(base::TextView statement, ListParser parseList) {
    if (statement.size() > kMaxStatementLength) throw tooComplex();
    StatementParser parser(statement, parseList);
    try {
        return parser.parse();
    } catch (const StatementError&) {
        throw;
    } catch (const base::RuntimeError& error) {
        throw StatementError(error, parser.place());
    }
}

}  // namespace jet::sql
