#include "win32/Layout.h"

#include <algorithm>
#include <cassert>

#include "forms/Control.h"
#include "forms/Form.h"

namespace win32 {

namespace {

constexpr int kTwipsPerInch = 1440;
constexpr int kFirstNativeId = 1001;

constexpr Place kLoginPlaces[] = {
    {.control = u"Label6"},
    {.control = u"txtPasswort"},
    {.control = u"cmdLogin"},
    {.control = u"cmdAbbrechen"},
};

constexpr Follow kNear = Follow::Near;
constexpr Follow kFar = Follow::Far;
constexpr Follow kBoth = Follow::Both;

// The frame comes last: what stands inside it is drawn above it.
constexpr Place kAccountPlaces[] = {
    {u"lvwBenKto", 12, 12, 596, 156, kBoth, kBoth, L"Benutzerkonten"},
    {u"cmbAddNew", 12, 178, 164, 26, kNear, kFar},
    {u"Label1", 26, 226, 118, 21, kNear, kFar},
    {u"txtUserNameDexo", 148, 226, 336, 21, kBoth, kFar},
    {u"Label5", 26, 256, 118, 21, kNear, kFar},
    {u"txtPathGlobal", 148, 256, 336, 21, kBoth, kFar},
    {u"cmdGlobal", 492, 254, 102, 25, kFar, kFar},
    {u"chbProgrammupdate", 148, 286, 160, 20, kNear, kFar},
    {u"cmdSpeichern", 12, 328, 150, 26, kNear, kFar},
    {u"cmbResetPWD", 170, 328, 164, 26, kNear, kFar},
    {u"cmdDel", 342, 328, 120, 26, kNear, kFar},
    {u"cmdAbbrechen", 498, 328, 110, 26, kFar, kFar},
    {u"Frame27", 12, 206, 596, 112, kBoth, kFar},
};

constexpr FormLayout kLayouts[] = {
    {u"frmLogin", L"Tolv.frmLogin", false, {0, 0}, {0, 0}, kLoginPlaces},
    {u"frmBenKto", L"Tolv.frmBenKto", true, {620, 366}, {760, 520}, kAccountPlaces},
};

int scaled(int value, unsigned dpi, int unitsPerInch = USER_DEFAULT_SCREEN_DPI) {
    return MulDiv(value, static_cast<int>(dpi), unitsPerInch);
}

SIZE scaled(SIZE size, unsigned dpi) {
    return {scaled(size.cx, dpi), scaled(size.cy, dpi)};
}

struct Span {
    LONG from;
    LONG to;
};

/// @param room  pixels that the client area has beyond its smallest extent
Span spanOf(int start, int length, Follow follow, LONG room, unsigned dpi) {
    Span span{scaled(start, dpi), scaled(start + length, dpi)};
    if (follow == Follow::Far) span.from += room;
    if (follow != Follow::Near) span.to += room;
    return span;
}

RECT fromTwips(const forms::Bounds& bounds, unsigned dpi) {
    const int left = scaled(bounds.leftTwips, dpi, kTwipsPerInch);
    const int top = scaled(bounds.topTwips, dpi, kTwipsPerInch);
    return {left, top, left + scaled(bounds.widthTwips, dpi, kTwipsPerInch),
            top + scaled(bounds.heightTwips, dpi, kTwipsPerInch)};
}

}  // namespace

int nativeId(const forms::Control& control) {
    const auto controls = control.form().Controls();
    return kFirstNativeId + static_cast<int>(std::find(controls.begin(), controls.end(), &control) - controls.begin());
}

const FormLayout& layoutOf(const forms::Form& form) {
    const auto* layout = std::find_if(std::begin(kLayouts), std::end(kLayouts),
                                      [&](const FormLayout& candidate) { return candidate.form == form.Name(); });
    assert(layout != std::end(kLayouts));
    return *layout;
}

SIZE firstClientSize(const FormLayout& layout, const forms::Form& form, unsigned dpi) {
    if (form.clientWidthTwips() == 0) return scaled(layout.first, dpi);
    return {scaled(form.clientWidthTwips(), dpi, kTwipsPerInch), scaled(form.clientHeightTwips(), dpi, kTwipsPerInch)};
}

SIZE smallestClientSize(const FormLayout& layout, unsigned dpi) {
    return scaled(layout.smallest, dpi);
}

RECT placeIn(SIZE client, const Place& place, const FormLayout& layout, const forms::Control& control, unsigned dpi) {
    if (place.width == 0) return fromTwips(control.bounds(), dpi);
    const SIZE smallest = smallestClientSize(layout, dpi);
    const Span across = spanOf(place.left, place.width, place.horizontal, std::max(0L, client.cx - smallest.cx), dpi);
    const Span down = spanOf(place.top, place.height, place.vertical, std::max(0L, client.cy - smallest.cy), dpi);
    return {across.from, down.from, across.to, down.to};
}

}  // namespace win32
