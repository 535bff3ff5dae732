#pragma once

#include <optional>
#include <utility>
#include <variant>
#include <vector>

#include "base/Text.h"
#include "base/Value.h"

/// Statements as they were written, before any name is looked up in a file.
namespace jet::sql {

enum class Comparison { Equal, NotEqual, Less, LessOrEqual, Greater, GreaterOrEqual };

/// One node of a condition. Which members count, the kind says; operands stand in the order of writing.
struct Expression {
    enum class Kind {
        Literal,  ///< value
        Name,     ///< table (may be empty), name
        And,      ///< two or more operands
        Or,       ///< two or more operands
        Not,      ///< one operand
        Compare,  ///< comparison, two operands
        IsNull,   ///< negated, one operand
        Between,  ///< negated; the value, the lower and the upper bound
        In,       ///< negated; the value, then the list
        Like,     ///< negated; the value, the pattern
    };

    Kind kind = Kind::Literal;
    Comparison comparison = Comparison::Equal;
    bool negated = false;
    base::Value value;
    base::Text table;
    base::Text name;
    std::vector<Expression> operands;
};

struct OrderItem {
    base::Text table;  ///< may be empty
    base::Text name;
    bool descending = false;
};

/// SELECT * FROM table [WHERE condition] [ORDER BY column [ASC | DESC], ...]
struct Select {
    base::Text table;
    std::optional<Expression> where;
    std::vector<OrderItem> order;
};

/// UPDATE table SET column = expression, ... [WHERE condition]
struct Update {
    base::Text table;
    std::vector<std::pair<base::Text, Expression>> values;
    std::optional<Expression> where;
};

/// DELETE [*] FROM table [WHERE condition]
struct Delete {
    base::Text table;
    std::optional<Expression> where;
};

/// INSERT INTO table [(column, ...)] VALUES (expression, ...)
struct Insert {
    base::Text table;
    std::vector<base::Text> columns;  ///< empty: all of them in their order
    std::vector<Expression> values;   ///< as many as columns, if those are named
};

using Statement = std::variant<Select, Update, Delete, Insert>;

}  // namespace jet::sql
