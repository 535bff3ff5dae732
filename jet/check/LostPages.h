#pragma once

#include <span>
#include <vector>

#include "jet/check/TableCheck.h"

namespace jet {

/// Looks at pages that nobody owns and that are not free. Other writers leave such pages behind; a fault is one that
/// shows that something was lost: a whole table that the catalog does not name, or rows of a table that counts more
/// than it has.
/// @param pages  ascending
void checkLostPages(const CheckContext& context, const std::vector<CheckedTable>& tables,
                    std::span<const PageNumber> pages);

}  // namespace jet
