#pragma once

#include "forms/Color.h"
#include "win32/SystemHeaders.h"

namespace win32 {

inline bool isSystemColor(forms::Color color) {
    return (color & 0x80000000U) != 0;
}

inline int systemColorIndex(forms::Color color) {
    return static_cast<int>(color & 0xFFU);
}

/// The current colour; to be asked for at each paint and never kept.
inline COLORREF presentColor(forms::Color color) {
    return isSystemColor(color) ? GetSysColor(systemColorIndex(color)) : color;
}

}  // namespace win32
