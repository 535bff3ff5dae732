#pragma once

#include <cstddef>

#include "base/Text.h"
#include "base/Value.h"
#include "jet/expression/Expression.h"
#include "jet/expression/TokenReader.h"

namespace jet {

/// Brackets and NOTs inside one another, and comparisons in one row.
inline constexpr std::size_t kMaxExpressionDepth = 100;

/// Reads one expression of a statement and quotes it in its errors: all from its first unit to the next
/// clause or the statement's end, as it was typed.
///
/// Binding, from tight to loose: comparison, IS, BETWEEN, IN and LIKE, one after the other from the left;
/// NOT; AND; OR. So NOT a = 5 denies the comparison.
class ExpressionParser {
public:
    /// The expression begins at the reader's present token.
    /// @param subject  of a validation rule: the column that stands where a predicate has no first operand, and that
    ///                 is to be equal to a literal that stands alone; must outlive the parser
    explicit ExpressionParser(TokenReader& reader, const Expression* subject = nullptr)
        : reader_(reader), subject_(subject), begin_(reader.token().begin) {}

    /// Stops at the first token that cannot belong to the expression.
    /// @throws base::RuntimeError if it is broken, too deep or beyond what the engine understands
    Expression parse() { return parseOr(); }

    /// To be called when what follows the expression cannot follow it.
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

/// Reads one expression that reaches to the end of the text.
/// @param subject  as of ExpressionParser
/// @throws base::RuntimeError as ExpressionParser::parse(), and if something follows the expression
Expression parseWhole(TokenReader reader, const Expression* subject = nullptr);

}  // namespace jet
