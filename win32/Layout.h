#pragma once

#include <span>

#include "base/Text.h"
#include "win32/Fonts.h"
#include "win32/SystemHeaders.h"

namespace forms {
class Control;
class Form;
}  // namespace forms

/// The positions of the controls of the two windows, in one table, and the only code that computes positions. The unit
/// is the pixel at 96 DPI and the usual text size. One scale (Fonts::scale) converts it to pixels: it grows with the
/// resolution and the text size, so that at no size a text is clipped or two controls overlap.
///
/// The order of a table's lines is the order of the native windows. The Tab key follows it, and a screen reader takes
/// the label directly before a box as the name of the box. So it differs from the order of definition.
/// reader calls a box (the label directly before it), and so differs from the order of definition.
namespace win32 {

/// How a control follows the window's size along one axis: its near edge is fixed, its far edge is, or both are.
enum class Follow { Near, Far, Both };

struct Place {
    base::TextView control;
    // In the form's smallest client area; unused if the form's definition gives the place in twips.
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;
    Follow horizontal = Follow::Near;
    Follow vertical = Follow::Near;
    /// Text of the native window for screen readers, if the model has none.
    const wchar_t* spokenName = nullptr;
    /// Another caption that the control may show, in bold.
    base::TextView boldCaption = {};
};

struct FormLayout {
    base::TextView form;
    const wchar_t* windowClass;
    bool resizable;
    SIZE smallest;  ///< client area; 0 by 0 if the form's definition gives it in twips
    SIZE first;     ///< client area at the start
    std::span<const Place> places;
};

/// Identifier of a control's native window: from 1001, in the form's order of definition.
int nativeId(const forms::Control& control);

/// The table of a form. Each of the program's forms has one (asserted).
const FormLayout& layoutOf(const forms::Form& form);

/// Client area in pixels, initial and smallest. @param scale  from Fonts::scale
SIZE firstClientSize(const FormLayout& layout, const forms::Form& form, unsigned scale);
SIZE smallestClientSize(const FormLayout& layout, const forms::Form& form, unsigned scale);

/// The fonts for a form, at a scale at which its captions fit. If the smallest client area would not fit on the screen,
/// the texts are smaller than the user wants them, but not smaller than usual.
/// @param dpi   dots per inch; 96 is 100 %
/// @param room  pixels available for the client area
Fonts fontsFor(const FormLayout& layout, const forms::Form& form, unsigned dpi, SIZE room);

/// The control's rectangle in pixels in a client area of this size.
RECT placeIn(SIZE client, const Place& place, const FormLayout& layout, const forms::Control& control, unsigned scale);

}  // namespace win32
