#pragma once

#include "jet/table/Table.h"
#include "jet/tree/IndexCursor.h"

namespace jet {

/// The row to which the cursor's present entry points.
/// @throws RuntimeError (damage) if the row does not exist, or has another key than the entry
Row rowAtEntry(const Table& table, const IndexDefinition& index, const IndexCursor& cursor);

}  // namespace jet
