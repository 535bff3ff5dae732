#pragma once

#include <vector>

#include "jet/change/TableWriter.h"
#include "jet/expression/BoundExpression.h"
#include "jet/value/Column.h"

namespace jet::sql {

/// The assignments of an UPDATE or INSERT: columns and the expressions for their new values.
class RowAssignments {
public:
    /// @param column  must outlive the assignments
    /// @throws base::RuntimeError if the column already has an assignment
    void add(const Column& column, BoundExpression value);

    /// The new values, computed from the present values of the row.
    std::vector<Assignment> valuesFor(const RowValues& row) const;

private:
    struct Target {
        const Column* column;
        BoundExpression value;
    };
    std::vector<Target> targets_;
};

}  // namespace jet::sql
