#pragma once

#include <span>
#include <vector>

#include "jet/check/TableCheck.h"

namespace jet {

/// Looks at pages that have no owner and are not free. Other writers leave such pages. It is a fault if the page shows
/// that something was lost: a whole table that is not in the catalog, or rows of a table that counts more rows than
/// were found.
/// @param pages  in ascending order
void checkLostPages(const CheckContext& context, const std::vector<CheckedTable>& tables,
                    std::span<const PageNumber> pages);

}  // namespace jet
