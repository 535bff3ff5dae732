#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "jet/page/PageSource.h"
#include "jet/sql/ResultSet.h"
#include "jet/value/Column.h"

namespace jet::sql {

struct OrderColumn {
    std::size_t column = 0;  ///< place in the result
    bool descending = false;
};

/// The rows' numbers in the order of the columns' index keys; rows with equal keys as they stand. Keys are
/// made once a row.
/// @param top  how many of the first rows are wanted; rows equal to the last of these come, too. Nothing: all rows
std::vector<std::uint32_t> orderByKeys(const ResultSet& rows, const std::vector<OrderColumn>& columns,
                                       std::optional<std::uint32_t> top);

/// The rows' numbers in the order of an index over one column.
/// @param rows  all rows of the table, as they lie in the file
/// @throws base::RuntimeError (damage) unless the index leads to each row exactly once
std::vector<std::uint32_t> orderByIndex(PageSource& source, const ResultSet& rows, const TableDefinition& definition,
                                        const IndexDefinition& index);

}  // namespace jet::sql
