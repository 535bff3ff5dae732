#pragma once

#include <string>

#include "base/Value.h"

namespace jet {

/// Checks a file and reads all that it holds: every table of the catalog, row by row and column by column, properties
/// and relationships, and each index from end to end.
///
/// Damage of the file, a RuntimeError, ends the reading of the table at hand and is counted; anything else that
/// escapes is a fault of the engine. So is damage of which the checker says nothing.
/// @param password  of the file
/// @return what was read, so that no reading can be left out as unused, and how often damage was met
struct ReadEverythingResult {
    std::size_t valueCount = 0;
    std::size_t damageCount = 0;
    std::string firstDamage;
    std::size_t faultCount = 0;  ///< what the checker found
};
ReadEverythingResult readEverything(base::Bytes file, base::TextView password);

}  // namespace jet
