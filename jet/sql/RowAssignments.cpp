#include "jet/sql/RowAssignments.h"

#include <algorithm>
#include <utility>

#include "jet/sql/SqlError.h"

namespace jet::sql {

void RowAssignments::add(const Column& column, BoundExpression value) {
    const bool isTaken =
        std::any_of(targets_.begin(), targets_.end(), [&](const Target& target) { return target.column == &column; });
    if (isTaken) throw columnNamedTwice(column.name);
    targets_.push_back({&column, std::move(value)});
}

std::vector<Assignment> RowAssignments::valuesFor(const RowValues& row) const {
    std::vector<Assignment> assignments;
    for (const Target& target : targets_)
        assignments.push_back({target.column->number, target.value.valueFor(row)});
    return assignments;
}

}  // namespace jet::sql
