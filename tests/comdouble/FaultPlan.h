#pragma once

#include <filesystem>

#include "tests/comdouble/AdoDouble.h"

namespace comdouble {

/// The faults that a file names, one a line, in UTF-8 with a tab between its words; without the file there are none.
///
///     call MEMBER NUMBER TEXT         the call fails with an exception record: "Connection.Open"
///     property NAME NUMBER TEXT       so does the put of the provider's property
///     statements COUNT                so many are left before the file is out of reach
///     missing-rows COUNT
///     missing-field COLUMN
///     no-value COLUMN                 delivers an error code, which is no value
///     text COLUMN TEXT                delivers the text
///
/// @throws std::invalid_argument for a line that is none of these
Faults faultsOf(const std::filesystem::path& plan);

}  // namespace comdouble
