#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "jet/expression/BoundExpression.h"
#include "jet/table/Table.h"

namespace jet::sql {

/// The rows of a table for which the WHERE of a statement holds.
///
/// An index is used where it gives the very same rows: for a condition that wants a column to be equal to a
/// constant. The rest of the condition is then asked of each row found.
class RowSearch {
public:
    /// @param table  must outlive the search
    /// @param where  nothing: all rows
    /// @throws base::RuntimeError if a name is unknown or types do not match
    RowSearch(const Table& table, const std::optional<Expression>& where);

    bool wantsAll() const { return !condition_; }

    /// Gives the rows in the order in which they lie in the file. The table must not be changed meanwhile.
    /// @param take  returns false to stop the search
    void forEach(const std::function<bool(const Row&)>& take) const;

    /// The places of all rows found, so that the table may be changed.
    std::vector<RowPointer> rows() const;

private:
    /// Part of an index where all rows with some value of a column must stand.
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
