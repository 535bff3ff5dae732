#pragma once

#include <cstdint>

namespace forms {

/// A colour as 0x00BBGGRR. If the top bit is set, the low byte is the number of a system colour, which a native window
/// looks up at each paint.
using Color = std::uint32_t;

inline constexpr Color kWindowBackground = 0x80000005;
inline constexpr Color kButtonFace = 0x8000000F;

}  // namespace forms
