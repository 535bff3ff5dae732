#pragma once

#include <cstddef>

#include "base/Text.h"
#include "base/Value.h"
#include "jet/expression/Expression.h"
#include "jet/expression/TokenReader.h"

namespace jet {

/// Limit for nested brackets and NOTs, and for comparisons that follow each other (a = b = c).
inline constexpr std::size_t kMaxExpressionDepth = 100;

/// Reads one expression of a statement. Its errors quote the expression as it was typed, up to the next clause or the
/// end of the statement.
///
/// Precedence, highest first: comparison, IS, BETWEEN, IN and LIKE, all on one level from left to right; NOT; AND; OR.
/// So NOT a = 5 means NOT (a = 5).
class ExpressionParser {
public:
    /// The expression begins at the current token of the reader.
    /// @param subject  only for validation rules: the column that is meant where a comparison has no first operand
    ///                 ("> 0"), and to which a literal without any operator must be equal; must outlive the parser
    explicit ExpressionParser(TokenReader& reader, const Expression* subject = nullptr)
        : reader_(reader), subject_(subject), begin_(reader.token().begin) {}

    /// Stops at the first token that cannot be part of the expression.
    /// @throws base::RuntimeError if the expression is broken, nested too deeply or not supported
    Expression parse() { return parseOr(); }

    /// For the caller, if the token after the expression is not allowed there.
    [[noreturn]] void fail() const;

private:
    class Level;

    Expression parseOr();
    Expression parseAnd();
    Expression parseNot();
    Expression parsePredicates();
    bool parsePredicate(Expression& left);
    bool atPredicate() const;
    Expression parseRulePart(const Expression& subject);
    Expression parseRange(Expression left, std::size_t begin);
    Expression parseList(Expression left, std::size_t begin);
    Expression parseOperand();
    Expression parseName();
    Expression parseNegative();
    base::TextView wholeExpression() const;
    std::size_t place() const { return reader_.token().begin; }

    TokenReader& reader_;
    const Expression* subject_;
    std::size_t begin_;
    std::size_t depth_ = 0;
};

/// Reads a text that is one expression.
/// @param subject  as of ExpressionParser
/// @throws base::RuntimeError as ExpressionParser::parse(), and if something follows the expression
Expression parseWhole(TokenReader reader, const Expression* subject = nullptr);

}  // namespace jet
