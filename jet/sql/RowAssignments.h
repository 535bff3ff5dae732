#pragma once

#include <vector>

#include "jet/change/TableWriter.h"
#include "jet/expression/BoundExpression.h"
#include "jet/value/Column.h"

namespace jet::sql {

/// What a statement stores in the columns of a row.
class RowAssignments {
public:
    /// @param column  must outlive the assignments
    /// @throws base::RuntimeError if the column has got a value already
    void add(const Column& column, BoundExpression value);

    /// The values, computed from those that the row has now.
    std::vector<Assignment> valuesFor(const RowValues& row) const;

private:
    struct Target {
        const Column* column;
        BoundExpression value;
    };
    std::vector<Target> targets_;
};

}  // namespace jet::sql
