#pragma once

#include <filesystem>

#include "tests/comdouble/AdoDouble.h"

namespace comdouble {

/// The faults that a file names, one on each line, in UTF-8 with a tab between words. Without the file there are no
/// faults.
///
///     call MEMBER NUMBER TEXT         the call fails with an exception record, for example "Connection.Open"
///     statements COUNT                this many statements succeed before the file cannot be reached any more
///     missing-field COLUMN
///     no-value COLUMN                 delivers an error code, which is not a value
///
/// @throws std::invalid_argument for any other line
Faults faultsOf(const std::filesystem::path& plan);

}  // namespace comdouble
