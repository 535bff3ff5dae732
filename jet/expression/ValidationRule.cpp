#include "jet/expression/ValidationRule.h"

#include <algorithm>

#include "jet/expression/ExpressionErrors.h"
#include "jet/expression/ExpressionParser.h"

namespace jet {

namespace {

bool usesLike(const Expression& expression) {
    return expression.kind == Expression::Kind::Like ||
           std::any_of(expression.operands.begin(), expression.operands.end(), usesLike);
}

Expression readRule(base::TextView rule, const Column* column) {
    Expression subject;
    subject.kind = Expression::Kind::Name;
    if (column != nullptr) subject.name = column->name;
    Expression expression = parseWhole(TokenReader(rule), column != nullptr ? &subject : nullptr);
    if (usesLike(expression)) throw unsupported(u"LIKE");
    return expression;
}

}  // namespace

ValidationRule::ValidationRule(base::TextView rule, const TableDefinition& table, const Column* column)
    : condition_(readRule(rule, column), {}, table.columnsForDisplay()) {
    condition_.expectCondition();
}

}  // namespace jet
