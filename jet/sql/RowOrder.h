#pragma once

#include <cstdint>
#include <vector>

#include "jet/page/PageSource.h"
#include "jet/sql/ResultSet.h"

namespace jet::sql {

/// The numbers of the rows in the order of an index over one column.
/// @param rows  all rows of the table, in the order of the file
/// @throws base::RuntimeError (damage) unless the index leads to each row exactly once
std::vector<std::uint32_t> orderByIndex(PageSource& source, const ResultSet& rows, const TableDefinition& definition,
                                        const IndexDefinition& index);

}  // namespace jet::sql
