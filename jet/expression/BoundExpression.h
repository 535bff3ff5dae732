#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

#include "base/Text.h"
#include "base/Value.h"
#include "jet/expression/Expression.h"
#include "jet/expression/RowValues.h"
#include "jet/value/Column.h"

namespace jet {

/// An equality of a column and a constant without which the whole condition cannot be true.
struct RequiredEquality {
    const Column* column = nullptr;
    base::Value value;
};

/// An expression whose names are bound to the columns of one table, ready to be evaluated for each row.
///
/// There are three truth values: a comparison with null is unknown, NOT unknown is unknown, and a row is found only if
/// the condition is true. Numbers are compared by value (yes/no as -1 and 0, dates as days), texts by their sort key.
/// BETWEEN accepts its bounds in either order. A number used as a condition means "not zero". LIKE accepts text and
/// whole numbers; its pattern is text. A GUID can also be compared with a text that has the form of a GUID.
class BoundExpression {
public:
    /// @param table    the name that may be written before a column
    /// @param columns  of the table; the columns must outlive the expression, the list need not
    /// @throws StatementError if a name is unknown or types do not match, even if the table has no rows
    BoundExpression(const Expression& expression, base::TextView table, const std::vector<const Column*>& columns);
    BoundExpression(const BoundExpression&) = delete;
    BoundExpression& operator=(const BoundExpression&) = delete;
    BoundExpression(BoundExpression&&) noexcept;
    BoundExpression& operator=(BoundExpression&&) noexcept;
    ~BoundExpression();

    /// @throws StatementError if the expression is no condition, for example a text
    void expectCondition() const;

    /// Whether the condition is true. If it is false or unknown, this is false.
    bool holds(const RowValues& row) const;

    /// The value of the expression; for a condition true, false, or null for unknown.
    base::Value valueFor(const RowValues& row) const;

    /// The equalities with constants other than null that must hold: the condition itself, or the operands of its AND.
    std::vector<RequiredEquality> requiredEqualities() const;

private:
    struct Node;
    class Binder;
    std::unique_ptr<const Node> root_;
};

/// The position of the column with this name; case is ignored.
std::optional<std::size_t> findColumn(const std::vector<const Column*>& columns, base::TextView name);

/// Whether the engine takes two names of tables or columns for the same.
bool namesAreEqual(base::TextView a, base::TextView b);

}  // namespace jet
