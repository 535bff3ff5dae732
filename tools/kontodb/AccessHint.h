#pragma once

#include <span>

#include "base/RuntimeError.h"
#include "base/Text.h"
#include "tools/kontodb/Console.h"

namespace kontodb {

/// Says in plain words what stands in the way if the engine's error means that something is write-protected or may not
/// be read: the file, its folder or a folder in the place of a file. Says nothing about other errors.
/// @param operands  arguments of the command, some of which name files
void hintAtAccess(const base::RuntimeError& error, std::span<const base::Text> operands, Console& console);

}  // namespace kontodb
