#include "jet/expression/ExpressionParser.h"

#include <array>
#include <cstdint>
#include <optional>
#include <utility>

#include "jet/expression/ExpressionErrors.h"

namespace jet {

namespace {

using Kind = Expression::Kind;

/// Operators and clauses of the original engine's language that this engine does not support.
constexpr std::array<base::TextView, 14> kLargerLanguage = {
    u"+", u"-", u"*", u"/", u"&", u"^", u"\\", u"MOD", u"XOR", u"GROUP", u"HAVING", u"UNION", u"ALIKE", u"EQV"};

Expression literal(base::Value value, std::size_t place) {
    Expression expression;
    expression.place = place;
    expression.value = std::move(value);
    return expression;
}

Expression node(Kind kind, std::size_t place, Expression operand) {
    Expression expression;
    expression.kind = kind;
    expression.place = place;
    expression.operands.push_back(std::move(operand));
    return expression;
}

std::optional<Comparison> comparisonAt(const TokenReader& reader) {
    if (reader.at(u"=")) return Comparison::Equal;
    if (reader.at(u"<>")) return Comparison::NotEqual;
    if (reader.at(u"<")) return Comparison::Less;
    if (reader.at(u"<=")) return Comparison::LessOrEqual;
    if (reader.at(u">")) return Comparison::Greater;
    if (reader.at(u">=")) return Comparison::GreaterOrEqual;
    return std::nullopt;
}

/// Changes the sign of a number. Returns false if the value is no number.
bool negate(base::Value& value) {
    if (auto* whole = std::get_if<std::int32_t>(&value)) {
        *whole = -*whole;
    } else if (auto* floating = std::get_if<double>(&value)) {
        *floating = -*floating;
    } else if (auto* decimal = std::get_if<base::Decimal>(&value)) {
        decimal->negative = !decimal->negative;
    } else {
        return false;
    }
    return true;
}

}  // namespace

/// Counts one level of nesting as long as it exists.
class ExpressionParser::Level {
public:
    explicit Level(ExpressionParser& parser) : parser_(parser) {
        if (++parser_.depth_ > kMaxExpressionDepth) throw tooComplex();
    }
    Level(const Level&) = delete;
    Level& operator=(const Level&) = delete;
    ~Level() { --parser_.depth_; }

private:
    ExpressionParser& parser_;
};

Expression ExpressionParser::parseOr() {
    Expression left = parseAnd();
    if (!reader_.at(u"OR")) return left;
    Expression any = node(Kind::Or, place(), std::move(left));
    while (reader_.take(u"OR"))
        any.operands.push_back(parseAnd());
    return any;
}

Expression ExpressionParser::parseAnd() {
    Expression left = parseNot();
    if (!reader_.at(u"AND")) return left;
    Expression all = node(Kind::And, place(), std::move(left));
    while (reader_.take(u"AND"))
        all.operands.push_back(parseNot());
    return all;
}

Expression ExpressionParser::parseNot() {
    const std::size_t begin = place();
    if (!reader_.take(u"NOT")) return parsePredicates();
    const Level level(*this);
    return node(Kind::Not, begin, parseNot());
}

Expression ExpressionParser::parsePredicates() {
    if (subject_ != nullptr) return parseRulePart(*subject_);
    Expression left = parseOperand();
    for (std::size_t count = 0; parsePredicate(left); ++count)
        if (count == kMaxExpressionDepth) throw tooComplex();
    return left;
}

/// Reads one comparison, IS, BETWEEN, IN or LIKE, with `left` as its first operand. Returns false if there is none.
bool ExpressionParser::parsePredicate(Expression& left) {
    const std::size_t begin = place();
    if (const auto comparison = comparisonAt(reader_)) {
        reader_.advance();
        left = node(Kind::Compare, begin, std::move(left));
        left.comparison = *comparison;
        left.operands.push_back(parseOperand());
        return true;
    }
    if (reader_.take(u"IS")) {
        left = node(Kind::IsNull, begin, std::move(left));
        left.negated = reader_.take(u"NOT");
        if (!reader_.take(u"NULL")) fail();
        return true;
    }
    const bool negated = reader_.take(u"NOT");
    if (reader_.take(u"BETWEEN")) {
        left = parseRange(std::move(left), begin);
    } else if (reader_.take(u"IN")) {
        left = parseList(std::move(left), begin);
    } else if (reader_.take(u"LIKE")) {
        left = node(Kind::Like, begin, std::move(left));
        left.operands.push_back(parseOperand());
    } else {
        if (negated) fail();
        return false;
    }
    left.negated = negated;
    return true;
}

bool ExpressionParser::atPredicate() const {
    return comparisonAt(reader_) || reader_.at(u"IS") || reader_.at(u"BETWEEN") || reader_.at(u"IN") ||
           reader_.at(u"LIKE");
}

/// In a rule, brackets hold a part of the rule, never an operand: in (5) < Nr the 5 could mean "Nr = 5" or the number.
Expression ExpressionParser::parseRulePart(const Expression& subject) {
    if (reader_.take(u"(")) {
        const Level level(*this);
        Expression inner = parseOr();
        if (!reader_.take(u")")) fail();
        return inner;
    }
    subject_ = nullptr;
    Expression part = atPredicate() ? subject : parseOperand();
    if (!parsePredicate(part) && part.kind == Kind::Literal) {
        Expression isEqual = node(Kind::Compare, place(), subject);
        isEqual.operands.push_back(std::move(part));
        part = std::move(isEqual);
    }
    subject_ = &subject;
    return part;
}

Expression ExpressionParser::parseRange(Expression left, std::size_t begin) {
    Expression range = node(Kind::Between, begin, std::move(left));
    range.operands.push_back(parseOperand());
    if (!reader_.take(u"AND")) fail();
    range.operands.push_back(parseOperand());
    return range;
}

Expression ExpressionParser::parseList(Expression left, std::size_t begin) {
    Expression list = node(Kind::In, begin, std::move(left));
    if (!reader_.take(u"(")) fail();
    do {
        list.operands.push_back(parseOperand());
    } while (reader_.take(u","));
    if (!reader_.take(u")")) fail();
    return list;
}

Expression ExpressionParser::parseOperand() {
    const std::size_t begin = place();
    if (reader_.token().kind == TokenKind::Literal) {
        Expression expression = literal(reader_.token().value, begin);
        reader_.advance();
        return expression;
    }
    if (reader_.take(u"TRUE")) return literal(true, begin);
    if (reader_.take(u"FALSE")) return literal(false, begin);
    if (reader_.take(u"NULL")) return literal(base::Null{}, begin);
    if (reader_.at(u"-")) return parseNegative();
    if (reader_.take(u"(")) {
        const Level level(*this);
        Expression inner = parseOr();
        if (!reader_.take(u")")) fail();
        return inner;
    }
    return parseName();
}

Expression ExpressionParser::parseName() {
    if (!isName(reader_.token())) fail();
    Expression column;
    column.kind = Kind::Name;
    column.place = place();
    column.name = reader_.token().text;
    reader_.advance();
    if (reader_.at(u"(")) throw StatementError(unsupported(column.name), column.place);
    if (reader_.take(u".")) {
        if (!isName(reader_.token())) fail();
        column.table = std::exchange(column.name, reader_.token().text);
        reader_.advance();
    }
    return column;
}

Expression ExpressionParser::parseNegative() {
    const std::size_t begin = place();
    bool negative = false;
    while (reader_.take(u"-"))
        negative = !negative;
    if (reader_.token().kind != TokenKind::Literal) {
        if (isName(reader_.token()) || reader_.at(u"(")) throw unsupported(u"-");
        fail();
    }
    Expression number = literal(reader_.token().value, begin);
    if (negative && !negate(number.value)) throw typesDoNotMatch(begin);
    reader_.advance();
    return number;
}

void ExpressionParser::fail() const {
    const TokenKind kind = reader_.token().kind;
    if (kind == TokenKind::BrokenText) throw unterminatedText(wholeExpression());
    if (kind == TokenKind::BrokenDate) throw brokenDate(wholeExpression());
    if (kind == TokenKind::BrokenGuid) throw brokenGuid(wholeExpression());
    for (const base::TextView part : kLargerLanguage)
        if (reader_.at(part)) throw unsupported(part);
    throw missingOperator(wholeExpression());
}

base::TextView ExpressionParser::wholeExpression() const {
    Lexer lexer(reader_.statement(), begin_);
    std::size_t end = begin_;
    for (Token token = lexer.next(); token.kind != TokenKind::End; token = lexer.next()) {
        const bool beyond =
            TokenReader::is(token, u"WHERE") || TokenReader::is(token, u"ORDER") || TokenReader::is(token, u";");
        if (beyond) break;
        end = token.end;
    }
    return reader_.statement().substr(begin_, end - begin_);
}

Expression parseWhole(TokenReader reader, const Expression* subject) {
    ExpressionParser parser(reader, subject);
    Expression expression = parser.parse();
    if (!reader.atEnd()) parser.fail();
    return expression;
}

}  // namespace jet
