#pragma once

#include "jet/table/Table.h"
#include "jet/tree/IndexCursor.h"

namespace jet {

/// The row of the cursor's present entry.
/// @throws RuntimeError (damage) if it is not there, or if the entry's key is not that of the row
Row rowAtEntry(const Table& table, const IndexDefinition& index, const IndexCursor& cursor);

}  // namespace jet
