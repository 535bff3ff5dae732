#pragma once

#include <string>

#include "base/Value.h"

namespace jet {

/// Checks a file and reads everything in it: every table of the catalog, row by row and column by column, properties
/// and relationships, and each index from beginning to end.
///
/// Damage of the file (a RuntimeError) ends the reading of one table and is counted. Any other exception is a fault of
/// the engine. It is also a fault if the checker does not report the damage.
/// @param password  of the file
/// @return a value made from everything that was read (so that no reading can be optimised away), and the number of
/// damages
struct ReadEverythingResult {
    std::size_t valueCount = 0;
    std::size_t damageCount = 0;
    std::string firstDamage;
    std::size_t faultCount = 0;  ///< what the checker found
};
ReadEverythingResult readEverything(base::Bytes file, base::TextView password);

}  // namespace jet
