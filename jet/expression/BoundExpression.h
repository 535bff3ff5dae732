#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

#include "base/Text.h"
#include "base/Value.h"
#include "jet/expression/Expression.h"
#include "jet/value/SortKey.h"

namespace jet {

/// What can be compared with each other.
enum class ValueClass { Number, Text, Bytes, Guid };

/// A column as expressions see it.
struct ExpressionColumn {
    base::Text name;
    ValueClass valueClass = ValueClass::Number;
    TextOrder order;  ///< of text columns
};

/// The values of one row, asked for by the column's place.
class ColumnValues {
public:
    virtual ~ColumnValues() = default;
    virtual base::Value value(std::size_t column) const = 0;
};

/// A column that the condition wants to be equal to a constant, whatever else it says.
struct RequiredEquality {
    std::size_t column = 0;
    base::Value value;
};

/// An expression whose names are bound to the columns of one table, ready to be asked for each row.
///
/// Three truth values: a comparison with null is unknown, NOT unknown is unknown, and a row counts only if
/// the condition is true. Numbers compare by value (yes/no as -1 and 0, dates as days), texts by their sort
/// key. BETWEEN takes its bounds in either order. A number stands as a condition for "not zero". LIKE takes
/// text and whole numbers; a pattern is text. A GUID is compared with a text in the form of one too.
class BoundExpression {
public:
    /// @param table  name under which the columns may be qualified
    /// @throws base::RuntimeError if a name is unknown or types do not match; so also for an empty table
    BoundExpression(const Expression& expression, base::TextView table, const std::vector<ExpressionColumn>& columns);
    BoundExpression(const BoundExpression&) = delete;
    BoundExpression& operator=(const BoundExpression&) = delete;
    BoundExpression(BoundExpression&&) noexcept;
    BoundExpression& operator=(BoundExpression&&) noexcept;
    ~BoundExpression();

    /// @throws base::RuntimeError if the expression can be neither true nor false
    void expectCondition() const;

    /// Whether the condition is true, neither false nor unknown.
    bool holds(const ColumnValues& row) const;

    /// What the expression stands for; of a condition true, false or null.
    base::Value valueFor(const ColumnValues& row) const;

    /// The equalities with constants other than null at the condition's top, joined by AND alone.
    std::vector<RequiredEquality> requiredEqualities() const;

private:
    struct Node;
    class Binder;
    std::unique_ptr<const Node> root_;
};

/// The place of a column by its name, which case does not tell apart.
std::optional<std::size_t> findColumn(const std::vector<ExpressionColumn>& columns, base::TextView name);

/// Whether two names of tables or columns are the same for the engine.
bool namesAreEqual(base::TextView a, base::TextView b);

}  // namespace jet
