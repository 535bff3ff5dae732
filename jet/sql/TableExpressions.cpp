#include "jet/sql/TableExpressions.h"

#include <algorithm>
#include <chrono>
#include <ctime>
#include <utility>

#include "base/RuntimeError.h"
#include "jet/expression/ExpressionParser.h"
#include "jet/expression/TableColumns.h"
#include "jet/expression/TokenReader.h"

namespace jet::sql {

namespace {

constexpr double kSecondsOfDay = 86400.0;
constexpr double kDayOfUnixEpoch = 25569.0;

std::tm localTime() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
#ifdef _WIN32
    localtime_s(&local, &now);
#else
    localtime_r(&now, &local);
#endif
    return local;
}

base::Date today(const std::tm& local) {
    const std::chrono::year_month_day date{std::chrono::year(local.tm_year + 1900),
                                           std::chrono::month(static_cast<unsigned>(local.tm_mon) + 1),
                                           std::chrono::day(static_cast<unsigned>(local.tm_mday))};
    return {kDayOfUnixEpoch + static_cast<double>(std::chrono::sys_days{date}.time_since_epoch().count())};
}

base::Date now(const std::tm& local) {
    const int seconds = (local.tm_hour * 60 + local.tm_min) * 60 + std::min(local.tm_sec, 59);
    return {today(local).days + seconds / kSecondsOfDay};
}

/// Whether the reader stands at a call of the function, without arguments and with nothing behind it.
bool isCallOf(TokenReader reader, base::TextView function) {
    return reader.take(function) && reader.take(u"(") && reader.take(u")") && reader.atEnd();
}

bool isWord(TokenReader reader, base::TextView word) {
    return reader.take(word) && reader.atEnd();
}

/// The whole text as an expression.
/// @return nothing if it is none
std::optional<Expression> wholeExpression(TokenReader reader, const Expression* subject) {
    try {
        ExpressionParser parser(reader, subject);
        Expression expression = parser.parse();
        if (!reader.atEnd()) return std::nullopt;
        return expression;
    } catch (const base::RuntimeError&) {
        return std::nullopt;
    }
}

bool usesLike(const Expression& expression) {
    return expression.kind == Expression::Kind::Like ||
           std::any_of(expression.operands.begin(), expression.operands.end(), usesLike);
}

class ExpressionRule final : public ValidationRule {
public:
    /// @throws base::RuntimeError if a name is unknown or types do not match
    ExpressionRule(const Expression& rule, const TableDefinition& table)
        : columns_(table), condition_(rule, {}, columns_.names()) {
        condition_.expectCondition();
    }

    bool permits(const RowValues& row) const override { return condition_.holds(Values(columns_, row)); }

private:
    class Values final : public ColumnValues {
    public:
        Values(const TableColumns& columns, const RowValues& row) : columns_(columns), row_(row) {}
        base::Value value(std::size_t column) const override { return row_.valueOf(columns_.column(column)); }

    private:
        const TableColumns& columns_;
        const RowValues& row_;
    };

    TableColumns columns_;
    BoundExpression condition_;
};

}  // namespace

std::optional<base::Value> TableExpressions::defaultValue(base::TextView expression) const {
    TokenReader reader(expression);
    reader.take(u"=");
    if (isCallOf(reader, u"NOW")) return now(localTime());
    if (isCallOf(reader, u"DATE")) return today(localTime());
    if (isWord(reader, u"YES") || isWord(reader, u"ON")) return true;
    if (isWord(reader, u"NO") || isWord(reader, u"OFF")) return false;
    const auto constant = wholeExpression(reader, nullptr);
    if (!constant || constant->kind != Expression::Kind::Literal) return std::nullopt;
    return constant->value;
}

std::unique_ptr<ValidationRule> TableExpressions::validationRule(base::TextView rule, const TableDefinition& table,
                                                                 const Column* column) const {
    Expression subject;
    subject.kind = Expression::Kind::Name;
    if (column != nullptr) subject.name = column->name;
    const auto expression = wholeExpression(TokenReader(rule), column != nullptr ? &subject : nullptr);
    if (!expression || usesLike(*expression)) return nullptr;
    try {
        return std::make_unique<ExpressionRule>(*expression, table);
    } catch (const base::RuntimeError&) {
        return nullptr;
    }
}

}  // namespace jet::sql
