#pragma once

namespace forms {

/// A rectangle in twips (1/1440 inch), relative to the client area of the form.
struct Bounds {
    int leftTwips = 0;
    int topTwips = 0;
    int widthTwips = 0;
    int heightTwips = 0;
    friend bool operator==(const Bounds&, const Bounds&) = default;
};

}  // namespace forms
