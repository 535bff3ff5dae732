#pragma once

#include <algorithm>

#include "base/Text.h"
#include "win32/Handles.h"
#include "win32/SystemHeaders.h"

namespace win32 {

/// The system's message font, normal and bold, at one resolution and in the text size that the user has chosen, and the
/// scale of everything around texts. A window makes its fonts again when its resolution or the user's settings change.
class Fonts {
public:
    /// @param dpi  dots per inch; 96 is 100 %
    explicit Fonts(unsigned dpi);
    /// The same font, one pixel smaller.
    Fonts smaller() const;

    bool operator==(const Fonts& other) const;

    /// For what the system draws and measures: icons and window frames.
    unsigned dpi() const { return dpi_; }
    /// How many pixels are drawn for a length of 96 in the layout: the resolution, or more if the texts are larger than
    /// usual.
    unsigned scale() const { return scale_; }
    void growScale(unsigned scale) { scale_ = std::max(scale_, scale); }

    HFONT normal() const { return normal_.get(); }
    HFONT bold() const { return bold_.get(); }

    /// Converts a length of the layout into pixels.
    int scaled(int length) const { return MulDiv(length, static_cast<int>(scale_), USER_DEFAULT_SCREEN_DPI); }

    /// Size of a line of text in pixels; "&" is drawn as it is.
    SIZE extent(base::TextView text, HFONT font) const;

private:
    Fonts(unsigned dpi, const LOGFONTW& font);

    unsigned dpi_;
    LOGFONTW font_;
    unsigned scale_ = 0;
    Font normal_;
    Font bold_;
};

}  // namespace win32
