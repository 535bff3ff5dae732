#pragma once

#include "base/Text.h"
#include "win32/Handles.h"
#include "win32/SystemHeaders.h"

namespace win32 {

/// The system's message font at one resolution, upright and bold. A window makes its fonts anew when its
/// resolution or the user's settings change.
class Fonts {
public:
    /// @param dpi  dots per inch, 96 being 100 %
    explicit Fonts(unsigned dpi);

    unsigned dpi() const { return dpi_; }
    HFONT normal() const { return normal_.get(); }
    HFONT bold() const { return bold_.get(); }

    /// 96-DPI pixels as pixels of this resolution.
    int scaled(int pixels) const { return MulDiv(pixels, static_cast<int>(dpi_), USER_DEFAULT_SCREEN_DPI); }

    /// Size of a line of text in pixels, as drawn without prefix characters.
    SIZE extent(base::TextView text, HFONT font) const;

private:
    unsigned dpi_;
    Font normal_;
    Font bold_;
};

}  // namespace win32
