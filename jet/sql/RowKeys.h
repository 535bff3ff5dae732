#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "base/Value.h"
#include "jet/sql/ResultSet.h"

namespace jet::sql {

struct OrderColumn {
    std::size_t column = 0;  ///< position in the result
    bool descending = false;
};

/// A sort key for each row of a result: the index keys of the columns in ORDER BY, one after the other. Rows with equal
/// keys stay in the order of the result.
class RowKeys {
public:
    RowKeys(const ResultSet& rows, const std::vector<OrderColumn>& columns);

    /// Drops all keys but the first ones and those that are equal to the last of these.
    void keepTop(std::uint32_t top);

    /// The numbers of the rows in the order of their keys.
    std::vector<std::uint32_t> sorted();

private:
    /// The place of a row's key in arena_, and a copy of its first eight bytes, which decide most comparisons.
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
