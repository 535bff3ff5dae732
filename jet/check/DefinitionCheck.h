#pragma once

#include "jet/check/CheckContext.h"
#include "jet/table/TableDefinition.h"

namespace jet {

/// Checks what reading a definition does not check: lengths, marks and free bytes of its pages, and whether its parts
/// fit together. The partners of relationships are checked with the catalog.
void checkDefinition(const CheckContext& context, const TableDefinition& definition, const Place& place);

}  // namespace jet
