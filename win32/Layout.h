#pragma once

#include <span>

#include "base/Text.h"
#include "win32/Fonts.h"
#include "win32/SystemHeaders.h"

namespace forms {
class Control;
class Form;
}  // namespace forms

/// Where the controls of the two windows stand: the one table of positions, and the only place that computes
/// one. Its unit is the pixel at 96 DPI and the usual size of texts. One scale (Fonts::scale) turns it into pixels: it
/// grows with the resolution and the size of texts, so that at no size a text is clipped or two controls meet.
///
/// The order of a table's lines is the order of the native windows: it rules the Tab key and what a screen
/// reader calls a box (the label directly before it), and so differs from the order of definition.
namespace win32 {

/// How a control's extent along one axis follows the window: its near edge, its far edge, or both.
enum class Follow { Near, Far, Both };

struct Place {
    base::TextView control;
    // At the form's smallest client area; unused where the form's definition gives the place in twips.
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;
    Follow horizontal = Follow::Near;
    Follow vertical = Follow::Near;
    /// Text of the native window, for readers of the screen, where the model has none.
    const wchar_t* spokenName = nullptr;
    /// What else the control may show, in bold.
    base::TextView boldCaption = {};
};

struct FormLayout {
    base::TextView form;
    const wchar_t* windowClass;
    bool resizable;
    SIZE smallest;  ///< client area; 0 by 0 where the form's definition gives it in twips
    SIZE first;     ///< client area at the start
    std::span<const Place> places;
};

/// Identifier of a control's native window: the controls of a form are counted in the order of definition.
int nativeId(const forms::Control& control);

/// The table of a form; the program has one for each of its forms (asserted).
const FormLayout& layoutOf(const forms::Form& form);

/// Client area in pixels at the start and at the smallest. @param scale  that of Fonts
SIZE firstClientSize(const FormLayout& layout, const forms::Form& form, unsigned scale);
SIZE smallestClientSize(const FormLayout& layout, const forms::Form& form, unsigned scale);

/// The fonts for a form, at a scale that has room for its captions. Where the smallest client area would not have room
/// on the screen, the texts are smaller than the user wants them, but not smaller than usual.
/// @param dpi   dots per inch, 96 being 100 %
/// @param room  pixels for the client area
Fonts fontsFor(const FormLayout& layout, const forms::Form& form, unsigned dpi, SIZE room);

/// The control's rectangle in pixels in a client area of that size.
RECT placeIn(SIZE client, const Place& place, const FormLayout& layout, const forms::Control& control, unsigned scale);

}  // namespace win32
