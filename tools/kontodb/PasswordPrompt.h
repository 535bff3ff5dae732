#pragma once

#include <optional>

#include "base/Text.h"

namespace kontodb {

bool isInputTerminal();

/// Reads one line from the terminal without showing it. What is typed after it stays unread.
/// @return nothing if the input ends
std::optional<base::Text> readHiddenLine();

}  // namespace kontodb
