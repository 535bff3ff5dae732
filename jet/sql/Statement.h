#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>
#include <variant>
#include <vector>

#include "base/Text.h"
#include "jet/expression/Expression.h"

/// Statements as they were written. No name has been looked up in a file yet.
namespace jet::sql {

struct ColumnName {
    base::Text table;  ///< may be empty
    base::Text name;
    std::size_t place = 0;  ///< in the statement, in units
};

struct OrderItem {
    ColumnName column;
    bool descending = false;
};

/// SELECT [TOP number] * | column, ... FROM table [WHERE condition] [ORDER BY column [ASC | DESC], ...]
/// SELECT COUNT(*) FROM table [WHERE condition]
struct Select {
    bool countsRows = false;
    std::optional<std::uint32_t> top;
    std::vector<ColumnName> columns;  ///< empty: all columns
    base::Text table;
    std::optional<Expression> where;
    std::vector<OrderItem> order;
};

/// UPDATE table SET column = expression, ... [WHERE condition]
struct Update {
    base::Text table;
    std::vector<std::pair<ColumnName, Expression>> values;
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
    std::vector<ColumnName> columns;  ///< empty: all columns in their order
    std::vector<Expression> values;   ///< as many as columns, if there are any columns
};

using Statement = std::variant<Select, Update, Delete, Insert>;

}  // namespace jet::sql
