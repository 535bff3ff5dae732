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

/// A column that the condition wants to be equal to a constant, whatever else it says.
struct RequiredEquality {
    const Column* column = nullptr;
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
    /// @param table    name under which the columns may be qualified
    /// @param columns  of the table; must outlive the expression, though not as a list
    /// @throws base::RuntimeError if a name is unknown or types do not match; so also for an empty table
    BoundExpression(const Expression& expression, base::TextView table, const std::vector<const Column*>& columns);
    BoundExpression(const BoundExpression&) = delete;
    BoundExpression& operator=(const BoundExpression&) = delete;
    BoundExpression(BoundExpression&&) noexcept;
    BoundExpression& operator=(BoundExpression&&) noexcept;
    ~BoundExpression();

    /// @throws base::RuntimeError if the expression can be neither true nor false
    void expectCondition() const;

    /// Whether the condition is true, neither false nor unknown.
    bool holds(const RowValues& row) const;

    /// What the expression stands for; of a condition true, false or null.
    base::Value valueFor(const RowValues& row) const;

    /// The equalities with constants other than null at the condition's top, joined by AND alone.
    std::vector<RequiredEquality> requiredEqualities() const;

private:
    struct Node;
    class Binder;
    std::unique_ptr<const Node> root_;
};

/// The place of a column by its name, which case does not tell apart.
std::optional<std::size_t> findColumn(const std::vector<const Column*>& columns, base::TextView name);

/// Whether two names of tables or columns are the same for the engine.
bool namesAreEqual(base::TextView a, base::TextView b);

}  // namespace jet
