#include "jet/expression/BoundExpression.h"

#include <algorithm>
#include <compare>
#include <type_traits>
#include <utility>

#include "jet/expression/ExpressionErrors.h"
#include "jet/expression/LikePattern.h"
#include "jet/expression/Number.h"
#include "jet/value/GuidText.h"
#include "jet/value/SortKey.h"

namespace jet {

/// Values of one class can be compared with each other.
enum class ValueClass { Number, Text, Bytes, Guid };

namespace {

using Kind = Expression::Kind;

enum class Truth { False, Unknown, True };

Truth truthOf(bool holds) {
    return holds ? Truth::True : Truth::False;
}

Truth negated(Truth truth, bool negate = true) {
    if (!negate || truth == Truth::Unknown) return truth;
    return truthOf(truth == Truth::False);
}

/// A value ready to be compared: null, a number, or bytes: the sort key of a text, a GUID as written, or plain bytes.
using Comparable = std::variant<base::Null, Number, base::Bytes>;

Comparable comparableOf(const base::Value& value, TextOrder order) {
    if (const auto number = Number::from(value)) return *number;
    if (const auto* text = std::get_if<base::Text>(&value)) return sortKey(*text, order);
    if (const auto* bytes = std::get_if<base::Bytes>(&value)) return *bytes;
    if (const auto* guid = std::get_if<base::Guid>(&value)) {
        const auto bytes = asWritten(*guid);
        return base::Bytes(bytes.begin(), bytes.end());
    }
    return base::Null{};
}

/// Both values must be of the same class, and not null.
std::partial_ordering compare(const Comparable& a, const Comparable& b) {
    if (const auto* number = std::get_if<Number>(&a)) return Number::compare(*number, std::get<Number>(b));
    return std::get<base::Bytes>(a) <=> std::get<base::Bytes>(b);
}

bool fits(std::partial_ordering order, Comparison comparison) {
    switch (comparison) {
        case Comparison::Equal:
            return std::is_eq(order);
        case Comparison::NotEqual:
            return std::is_neq(order);
        case Comparison::Less:
            return std::is_lt(order);
        case Comparison::LessOrEqual:
            return std::is_lteq(order);
        case Comparison::Greater:
            return std::is_gt(order);
        case Comparison::GreaterOrEqual:
            return std::is_gteq(order);
    }
    return false;
}

Truth compareAs(Comparison comparison, const Comparable& a, const Comparable& b) {
    const bool unknown = std::holds_alternative<base::Null>(a) || std::holds_alternative<base::Null>(b);
    return unknown ? Truth::Unknown : truthOf(fits(compare(a, b), comparison));
}

Truth both(Truth a, Truth b) {
    return std::min(a, b);
}

Truth either(Truth a, Truth b) {
    return std::max(a, b);
}

/// The class of a literal; nothing for null, which can be compared with all classes.
std::optional<ValueClass> classOf(const base::Value& value) {
    if (base::isNull(value)) return std::nullopt;
    if (std::holds_alternative<base::Text>(value)) return ValueClass::Text;
    if (std::holds_alternative<base::Bytes>(value)) return ValueClass::Bytes;
    if (std::holds_alternative<base::Guid>(value)) return ValueClass::Guid;
    return ValueClass::Number;
}

ValueClass classOf(ColumnType type) {
    switch (type) {
        case ColumnType::Text:
        case ColumnType::Memo:
            return ValueClass::Text;
        case ColumnType::Binary:
        case ColumnType::Ole:
        case ColumnType::Block:
            return ValueClass::Bytes;
        case ColumnType::Guid:
            return ValueClass::Guid;
        default:
            return ValueClass::Number;
    }
}

/// The text that LIKE compares with its pattern; nothing if the value cannot be used with LIKE.
std::optional<base::Text> textForLike(const base::Value& value) {
    return std::visit(
        [](const auto& held) -> std::optional<base::Text> {
            using Held = std::decay_t<decltype(held)>;
            if constexpr (std::is_same_v<Held, base::Text>) return held;
            if constexpr (std::is_same_v<Held, bool>) return base::decimal(held ? -1 : 0);
            if constexpr (std::is_integral_v<Held>) return base::decimal(held);
            return std::nullopt;
        },
        value);
}

}  // namespace

/// A node of the expression, with its name bound or its constant made ready for comparisons.
struct BoundExpression::Node {
    Kind kind = Kind::Literal;
    Comparison comparison = Comparison::Equal;
    bool isNegated = false;
    std::size_t place = 0;  ///< in the text
    const Column* column = nullptr;
    std::optional<ValueClass> valueClass;  ///< nothing for the literal null
    TextOrder order;                       ///< how operands that are texts are compared
    base::Value value;
    Comparable comparable;  ///< of a literal
    std::optional<LikePattern> pattern;
    std::vector<Node> operands;

    base::Value valueFor(const RowValues& row) const;
    Comparable comparableFor(const RowValues& row, TextOrder textOrder) const;
    Truth truthFor(const RowValues& row) const;
    Truth combine(const RowValues& row) const;
    Truth isBetween(const RowValues& row) const;
    Truth isIn(const RowValues& row) const;
    Truth isLike(const RowValues& row) const;

    bool isColumn() const { return kind == Kind::Name; }
    bool isLiteral() const { return kind == Kind::Literal; }
};

base::Value BoundExpression::Node::valueFor(const RowValues& row) const {
    if (isLiteral()) return value;
    if (isColumn()) return row.valueOf(*column);
    const Truth truth = truthFor(row);
    if (truth == Truth::Unknown) return base::Null{};
    return truth == Truth::True;
}

Comparable BoundExpression::Node::comparableFor(const RowValues& row, TextOrder textOrder) const {
    return isLiteral() ? comparable : comparableOf(valueFor(row), textOrder);
}

Truth BoundExpression::Node::truthFor(const RowValues& row) const {
    switch (kind) {
        case Kind::Literal:
        case Kind::Name: {
            const auto number = Number::from(valueFor(row));
            return number ? truthOf(!number->isZero()) : Truth::Unknown;
        }
        case Kind::And:
        case Kind::Or:
            return combine(row);
        case Kind::Not:
            return negated(operands[0].truthFor(row));
        case Kind::Compare:
            return compareAs(comparison, operands[0].comparableFor(row, order), operands[1].comparableFor(row, order));
        case Kind::IsNull:
            return truthOf(base::isNull(operands[0].valueFor(row)) != isNegated);
        case Kind::Between:
            return negated(isBetween(row), isNegated);
        case Kind::In:
            return negated(isIn(row), isNegated);
        case Kind::Like:
            return negated(isLike(row), isNegated);
    }
    return Truth::Unknown;
}

Truth BoundExpression::Node::combine(const RowValues& row) const {
    const Truth decided = kind == Kind::And ? Truth::False : Truth::True;
    Truth truth = negated(decided);
    for (const Node& operand : operands) {
        const Truth next = operand.truthFor(row);
        truth = kind == Kind::And ? both(truth, next) : either(truth, next);
        if (truth == decided) break;
    }
    return truth;
}

Truth BoundExpression::Node::isBetween(const RowValues& row) const {
    const Comparable tested = operands[0].comparableFor(row, order);
    const Comparable first = operands[1].comparableFor(row, order);
    const Comparable second = operands[2].comparableFor(row, order);
    const auto lies = [&](const Comparable& low, const Comparable& high) {
        return both(compareAs(Comparison::GreaterOrEqual, tested, low),
                    compareAs(Comparison::LessOrEqual, tested, high));
    };
    return either(lies(first, second), lies(second, first));
}

Truth BoundExpression::Node::isIn(const RowValues& row) const {
    const Comparable tested = operands[0].comparableFor(row, order);
    Truth truth = Truth::False;
    for (std::size_t i = 1; i < operands.size() && truth != Truth::True; ++i)
        truth = either(truth, compareAs(Comparison::Equal, tested, operands[i].comparableFor(row, order)));
    return truth;
}

Truth BoundExpression::Node::isLike(const RowValues& row) const {
    const base::Value tested = operands[0].valueFor(row);
    if (base::isNull(tested)) return Truth::Unknown;
    const auto text = textForLike(tested);
    if (!text) throw typesDoNotMatch(place);
    if (pattern) return truthOf(pattern->matches(*text));
    const base::Value typed = operands[1].valueFor(row);
    const auto* given = std::get_if<base::Text>(&typed);
    return given != nullptr ? truthOf(LikePattern(*given, order).matches(*text)) : Truth::Unknown;
}

/// Binds an expression to the columns of one table, and checks that its operands can be compared.
class BoundExpression::Binder {
public:
    Binder(base::TextView table, const std::vector<const Column*>& columns) : table_(table), columns_(columns) {}

    Node bind(const Expression& expression) const {
        Node node;
        node.kind = expression.kind;
        node.comparison = expression.comparison;
        node.isNegated = expression.negated;
        node.place = expression.place;
        node.valueClass = ValueClass::Number;  // of a condition, too
        if (node.kind == Kind::Name) bindName(node, expression);
        if (node.kind == Kind::Literal) {
            node.value = expression.value;
            node.valueClass = classOf(expression.value);
        }
        for (const Expression& operand : expression.operands)
            node.operands.push_back(bind(operand));
        prepareOperands(node);
        return node;
    }

    /// A condition must be a number or null.
    static void expectTruth(const Node& node) {
        if (node.valueClass.value_or(ValueClass::Number) != ValueClass::Number) throw typesDoNotMatch(node.place);
    }

private:
    void bindName(Node& node, const Expression& expression) const {
        const auto column = findColumn(columns_, expression.name);
        const bool qualified = expression.table.empty() || namesAreEqual(expression.table, table_);
        if (!column || !qualified) throw missingParameter(expression.table, expression.name, expression.place);
        node.column = columns_[*column];
        node.valueClass = classOf(node.column->type);
        node.order = node.column->textOrder;
    }

    static void prepareOperands(Node& node) {
        switch (node.kind) {
            case Kind::Literal:
            case Kind::Name:
            case Kind::IsNull:
                return;
            case Kind::And:
            case Kind::Or:
            case Kind::Not:
                for (const Node& operand : node.operands)
                    expectTruth(operand);
                return;
            case Kind::Compare:
            case Kind::Between:
            case Kind::In:
                takeOrder(node);
                takeGuids(node);
                expectOneClass(node);
                for (Node& operand : node.operands)
                    if (operand.isLiteral()) operand.comparable = comparableOf(operand.value, node.order);
                return;
            case Kind::Like:
                takeOrder(node);
                prepareLike(node);
        }
    }

    /// The first column among the operands decides in which order their texts are compared.
    static void takeOrder(Node& node) {
        const auto column = std::find_if(node.operands.begin(), node.operands.end(),
                                         [](const Node& operand) { return operand.isColumn(); });
        if (column != node.operands.end()) node.order = column->order;
    }

    /// A text in the form of a GUID counts as one if it is compared with a GUID.
    static void takeGuids(Node& node) {
        const bool hasGuid = std::any_of(node.operands.begin(), node.operands.end(),
                                         [](const Node& operand) { return operand.valueClass == ValueClass::Guid; });
        for (Node& operand : node.operands) {
            const auto* text = std::get_if<base::Text>(&operand.value);
            const auto guid = hasGuid && text != nullptr ? guidFromText(*text) : std::nullopt;
            if (!guid) continue;
            operand.value = *guid;
            operand.valueClass = ValueClass::Guid;
        }
    }

    static void expectOneClass(const Node& node) {
        std::optional<ValueClass> first;
        for (const Node& operand : node.operands) {
            if (!first) first = operand.valueClass;
            if (operand.valueClass && operand.valueClass != first) throw typesDoNotMatch(node.place);
        }
    }

    static void prepareLike(Node& node) {
        const ValueClass tested = node.operands[0].valueClass.value_or(ValueClass::Text);
        const ValueClass pattern = node.operands[1].valueClass.value_or(ValueClass::Text);
        const bool possible = tested == ValueClass::Text || tested == ValueClass::Number;
        if (!possible || pattern != ValueClass::Text) throw typesDoNotMatch(node.place);
        if (const auto* text = std::get_if<base::Text>(&node.operands[1].value); text != nullptr)
            node.pattern.emplace(*text, node.order);
    }

    base::TextView table_;
    const std::vector<const Column*>& columns_;
};

BoundExpression::BoundExpression(const Expression& expression, base::TextView table,
                                 const std::vector<const Column*>& columns)
    : root_(std::make_unique<const Node>(Binder(table, columns).bind(expression))) {}

BoundExpression::BoundExpression(BoundExpression&&) noexcept = default;
BoundExpression& BoundExpression::operator=(BoundExpression&&) noexcept = default;
BoundExpression::~BoundExpression() = default;

void BoundExpression::expectCondition() const {
    Binder::expectTruth(*root_);
}

bool BoundExpression::holds(const RowValues& row) const {
    return root_->truthFor(row) == Truth::True;
}

base::Value BoundExpression::valueFor(const RowValues& row) const {
    return root_->valueFor(row);
}

std::vector<RequiredEquality> BoundExpression::requiredEqualities() const {
    std::vector<RequiredEquality> equalities;
    const auto look = [&](const Node& node) {
        if (node.kind != Kind::Compare || node.comparison != Comparison::Equal) return;
        const Node* column = &node.operands[0];
        const Node* constant = &node.operands[1];
        if (!column->isColumn()) std::swap(column, constant);
        if (!column->isColumn() || !constant->isLiteral() || base::isNull(constant->value)) return;
        equalities.push_back({column->column, constant->value});
    };
    look(*root_);
    if (root_->kind == Kind::And) std::for_each(root_->operands.begin(), root_->operands.end(), look);
    return equalities;
}

bool namesAreEqual(base::TextView a, base::TextView b) {
    return base::equalsIgnoringAsciiCase(a, b) || (sortKeyIsCertain(a) && sortKeyIsCertain(b) && textsAreEqual(a, b));
}

std::optional<std::size_t> findColumn(const std::vector<const Column*>& columns, base::TextView name) {
    for (std::size_t i = 0; i < columns.size(); ++i)
        if (namesAreEqual(columns[i]->name, name)) return i;
    return std::nullopt;
}

}  // namespace jet
