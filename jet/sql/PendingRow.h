#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "base/Value.h"
#include "jet/change/TableWriter.h"

namespace jet::sql {

/// The values assigned to a row that is not stored yet: a new row, or an existing one of a result. It is in
/// memory only and holds nothing of the file.
class PendingRow {
public:
    /// For an existing row.
    PendingRow() = default;
    /// @param started  a new row's values before anything is assigned
    explicit PendingRow(RowOfValues started) : started_(std::move(started)) {}

    bool isNew() const { return started_.has_value(); }
    /// For a new row only.
    const RowOfValues& started() const { return *started_; }
    const std::vector<Assignment>& assignments() const { return assignments_; }

    /// @param value  must already have the column's type
    void assign(std::uint16_t column, base::Value value);

    /// The column's value in this row; null if it is an existing row and the column has not been assigned.
    const base::Value* valueOf(std::uint16_t column) const;

private:
    std::optional<RowOfValues> started_;
    std::vector<Assignment> assignments_;  ///< at most one for each column
};

}  // namespace jet::sql
