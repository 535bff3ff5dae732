#pragma once

#include <string_view>

#include "base/Text.h"

/// The texts that explain the program.
namespace kontodb {

/// The commands, each in a line.
std::string_view overview();

/// @param topic  a command, or "sql"
/// @return empty if there is no such topic
std::string_view helpOn(base::TextView topic);

}  // namespace kontodb
