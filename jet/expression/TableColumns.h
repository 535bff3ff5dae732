#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "jet/expression/BoundExpression.h"
#include "jet/table/Table.h"
#include "jet/table/TableDefinition.h"

namespace jet {

/// The columns of a table as statements know them: at their places in SELECT *.
class TableColumns {
public:
    /// The definition must outlive the columns.
    explicit TableColumns(const TableDefinition& definition);

    std::size_t count() const { return columns_.size(); }
    const Column& column(std::size_t place) const { return *columns_[place]; }
    const std::vector<ExpressionColumn>& names() const { return names_; }
    std::optional<std::size_t> find(base::TextView name) const { return findColumn(names_, name); }

private:
    std::vector<const Column*> columns_;
    std::vector<ExpressionColumn> names_;
};

/// A row's values for expressions, decoded when they are asked for.
class ValuesOfRow final : public ColumnValues {
public:
    ValuesOfRow(const Table& table, const TableColumns& columns, const Row& row)
        : table_(table), columns_(columns), row_(row) {}
    base::Value value(std::size_t column) const override { return table_.value(row_.view, columns_.column(column)); }

private:
    const Table& table_;
    const TableColumns& columns_;
    const Row& row_;
};

}  // namespace jet
