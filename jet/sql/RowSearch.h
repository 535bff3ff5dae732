#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "jet/expression/BoundExpression.h"
#include "jet/table/Table.h"

namespace jet::sql {

/// Finds the rows of a table for which the WHERE condition of a statement is true.
///
/// If the condition requires that a column is equal to a constant, an index is used, provided that it gives the same
/// rows as a scan. The whole condition is then checked for each row found.
class RowSearch {
public:
    /// @param table  must outlive the search
    /// @param where  without a value: all rows
    /// @throws base::RuntimeError if a name is unknown or types do not match
    RowSearch(const Table& table, const std::optional<Expression>& where);

    bool wantsAll() const { return !condition_; }

    /// Calls `take` for each row, in the order of the file. The table must not change during the call.
    /// @param take  returns false to stop the search
    void forEach(const std::function<bool(const Row&)>& take) const;

    /// The places of all rows found. Afterwards the table may be changed.
    std::vector<RowPointer> rows() const;

private:
    /// The part of an index that has all rows with one value of a column.
    struct IndexRange {
        const IndexDefinition* index = nullptr;
        base::Bytes key;
    };

    std::optional<IndexRange> rangeOfCondition() const;
    std::vector<RowPointer> rowsInRange(const IndexRange& range) const;
    bool isWanted(const Row& row) const;

    const Table& table_;
    std::optional<BoundExpression> condition_;
};

}  // namespace jet::sql
