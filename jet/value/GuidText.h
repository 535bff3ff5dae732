#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "base/Text.h"
#include "base/Value.h"

namespace jet {

/// The sixteen bytes in the order in which a GUID is written and sorted: its three integers are big-endian.
std::array<std::uint8_t, 16> asWritten(const base::Guid& guid);

/// Reads "{6B29FC40-CA47-1067-B31D-00DD010662DA}", in upper or lower case, with or without blanks around it.
/// @return nothing for any other text
std::optional<base::Guid> guidFromText(base::TextView text);

}  // namespace jet
