#pragma once

#include "jet/check/CheckContext.h"
#include "jet/check/TableRows.h"
#include "jet/table/TableDefinition.h"

namespace jet {

/// Checks an index against its rows and by itself: walks through the nodes of the tree, from the first leaf to the
/// last. Every live row must be met once, under the key that is computed from it.
/// @param block  position in TableDefinition::indexes
void checkIndex(const CheckContext& context, const TableRows& rows, std::size_t block, const Place& tablePlace);

}  // namespace jet
