#pragma once

#include "jet/check/TableCheck.h"
#include "jet/check/TableRows.h"

namespace jet {

/// Checks an index against its rows and itself: the tree is walked through its nodes, from the first leaf to the
/// last, and every live row must be met once, under the key that is computed from it.
/// @param block  position in TableDefinition::indexes
void checkIndex(const CheckContext& context, const TableRows& rows, std::size_t block, const Place& tablePlace);

}  // namespace jet
