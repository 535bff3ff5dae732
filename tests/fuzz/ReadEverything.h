#pragma once

#include <string>

#include "base/Value.h"

namespace jet {

struct ReadEverythingResult {
    std::size_t valueCount = 0;   ///< values and index entries that could be read
    std::size_t damageCount = 0;  ///< run-time errors
    std::string firstDamage;
    std::size_t faultCount = 0;  ///< what the checker found
};
/// Checks a file and reads everything in it: every table of the catalog, row by row and column by column, its
/// properties, and each index from beginning to end.
///
/// Damage of the file (a RuntimeError) ends the reading of one table or index and is counted.
/// @throws std::logic_error  if an error has no description, or if the checker throws or misses the damage
ReadEverythingResult readEverything(base::Bytes file, base::TextView password);

}  // namespace jet
