#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "base/Value.h"
#include "jet/sql/ResultSet.h"

namespace jet::sql {

struct OrderColumn {
    std::size_t column = 0;  ///< place in the result
    bool descending = false;
};

/// A key for each row of a result: the index keys of the columns of an order, one after the other. Rows with equal keys
/// stand as in the result.
class RowKeys {
public:
    RowKeys(const ResultSet& rows, const std::vector<OrderColumn>& columns);

    /// Keeps the first rows and those that are equal to the last of them.
    void keepTop(std::uint32_t top);

    /// The rows' numbers in order.
    std::vector<std::uint32_t> sorted();

private:
    /// A row's key in the arena, with its first eight bytes at hand: they decide most comparisons.
    struct Row {
        std::uint64_t beginning = 0;
        std::size_t offset = 0;
        std::size_t lengthBytes = 0;
        std::uint32_t number = 0;
    };

    bool isBefore(const Row& a, const Row& b) const;

    base::Bytes arena_;
    std::vector<Row> rows_;
};

}  // namespace jet::sql
