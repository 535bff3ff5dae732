#include "jet/sql/PendingRow.h"

#include <algorithm>
#include <utility>

namespace jet::sql {

void PendingRow::assign(std::uint16_t column, base::Value value) {
    const auto found = std::find_if(assignments_.begin(), assignments_.end(),
                                    [column](const Assignment& assignment) { return assignment.column == column; });
    if (found != assignments_.end())
        found->value = std::move(value);
    else
        assignments_.push_back({column, std::move(value)});
}

const base::Value* PendingRow::valueOf(std::uint16_t column) const {
    for (const Assignment& assignment : assignments_)
        if (assignment.column == column) return &assignment.value;
    return started_ ? &started_->at(column) : nullptr;
}

}  // namespace jet::sql
