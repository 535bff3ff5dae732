#pragma once

#include "jet/check/TableCheck.h"

namespace jet {

/// Checks what the reading of a definition does not: lengths, marks and free bytes of its pages, and that its parts
/// fit together. Partners of relationships are checked with the catalog.
void checkDefinition(const CheckContext& context, const TableDefinition& definition, const Place& place);

}  // namespace jet
