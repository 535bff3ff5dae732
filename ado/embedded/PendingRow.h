#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "base/Value.h"
#include "jet/change/TableWriter.h"

namespace ado::embedded {

/// What was assigned to a row that is not stored yet: a new one, or one that the record set has. It lives in memory
/// alone and holds nothing of the file.
class PendingRow {
public:
    /// Of an existing row.
    PendingRow() = default;
    /// @param started  what a new row has before anything is assigned
    explicit PendingRow(jet::RowOfValues started) : started_(std::move(started)) {}

    bool isNew() const { return started_.has_value(); }
    /// Only of a new row.
    const jet::RowOfValues& started() const { return *started_; }
    const std::vector<jet::Assignment>& assignments() const { return assignments_; }

    /// @param value  converted to the column's type
    void assign(std::uint16_t column, base::Value value);

    /// The column's value in this row; null if an existing row has not been given one.
    const base::Value* valueOf(std::uint16_t column) const;

private:
    std::optional<jet::RowOfValues> started_;
    std::vector<jet::Assignment> assignments_;  ///< one a column
};

}  // namespace ado::embedded
