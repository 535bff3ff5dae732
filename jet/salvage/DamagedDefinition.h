#pragma once

#include <optional>
#include <vector>

#include "base/Text.h"
#include "jet/salvage/DamagedFile.h"
#include "jet/table/TableDefinition.h"

namespace jet {

/// A definition as far as it can be read.
struct DamagedDefinition {
    TableDefinition definition;
    std::vector<base::Text> losses;  ///< German sentences without full stop: what is missing

    bool isWhole() const { return losses.empty(); }
};

/// Reads a definition of which any byte may be wrong. Fixed numbers are restored. A column that cannot be described is
/// left out, and so is an index. If the length of a name was damaged, it is the only one with which the names fill
/// their place; if no length does, names are made up of numbers ("Spalte1").
/// @param page  the first page of the chain; its kind does not matter
/// @return nothing if the columns cannot be found
std::optional<DamagedDefinition> readDamagedDefinition(DamagedFile& file, PageNumber page);

}  // namespace jet
