#include "win32/Layout.h"

#include <algorithm>
#include <cassert>

#include "forms/CheckBox.h"
#include "forms/CommandButton.h"
#include "forms/Form.h"
#include "forms/Label.h"

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

// The frame comes last, so that the controls inside it are drawn above it.
constexpr Place kAccountPlaces[] = {
    {u"lvwBenKto", 12, 12, 596, 156, kBoth, kBoth, L"Benutzerkonten"},
    {u"cmbAddNew", 12, 178, 164, 26, kNear, kFar},
    {u"Label1", 26, 226, 125, 21, kNear, kFar},
    {u"txtUserNameDexo", 153, 226, 325, 21, kBoth, kFar},
    {u"Label5", 26, 256, 125, 21, kNear, kFar},
    {u"txtPathGlobal", 153, 256, 325, 21, kBoth, kFar},
    {u"cmdGlobal", 486, 254, 108, 25, kFar, kFar},
    {u"chbProgrammupdate", 153, 286, 160, 20, kNear, kFar},
    {u"cmdSpeichern", 12, 328, 150, 26, kNear, kFar, nullptr, u"Speichern (Strg+S)"},
    {u"cmbResetPWD", 170, 328, 164, 26, kNear, kFar},
    {u"cmdDel", 342, 328, 120, 26, kNear, kFar},
    {u"cmdAbbrechen", 498, 328, 110, 26, kFar, kFar},
    {u"Frame27", 12, 206, 596, 112, kBoth, kFar},
};

constexpr FormLayout kLayouts[] = {
    {u"frmLogin", L"Tolv.frmLogin", false, {0, 0}, {0, 0}, kLoginPlaces},
    {u"frmBenKto", L"Tolv.frmBenKto", true, {620, 366}, {760, 520}, kAccountPlaces},
};

int scaled(int value, unsigned scale, int unitsPerInch = USER_DEFAULT_SCREEN_DPI) {
    return MulDiv(value, static_cast<int>(scale), unitsPerInch);
}

SIZE scaled(SIZE size, unsigned scale) {
    return {scaled(size.cx, scale), scaled(size.cy, scale)};
}

struct Span {
    LONG from;
    LONG to;
};

/// @param room  pixels by which the client area is larger than its smallest size
Span spanOf(int start, int length, Follow follow, LONG room, unsigned scale) {
    Span span{scaled(start, scale), scaled(start + length, scale)};
    if (follow == Follow::Far) span.from += room;
    if (follow != Follow::Near) span.to += room;
    return span;
}

RECT fromTwips(const forms::Bounds& bounds, unsigned scale) {
    const int left = scaled(bounds.leftTwips, scale, kTwipsPerInch);
    const int top = scaled(bounds.topTwips, scale, kTwipsPerInch);
    return {left, top, left + scaled(bounds.widthTwips, scale, kTwipsPerInch),
            top + scaled(bounds.heightTwips, scale, kTwipsPerInch)};
}

/// Width that a control needs beside its caption: for a button's edge, a check box's square, a label's gap.
int besideCaption(const forms::Control& control) {
    switch (control.kind()) {
        case forms::Kind::CommandButton:
            return 12;
        case forms::Kind::CheckBox:
            return 22;
        case forms::Kind::Label:
            return 4;
        default:
            return 0;
    }
}

base::TextView captionOf(const forms::Control& control) {
    auto& any = const_cast<forms::Control&>(control);
    if (const auto* button = forms::as<forms::CommandButton>(any)) return button->Caption();
    if (const auto* box = forms::as<forms::CheckBox>(any)) return box->Caption();
    if (const auto* label = forms::as<forms::Label>(any)) return label->Caption();
    return {};
}

/// The smallest scale at which the captions fit into the place.
unsigned scaleFor(const Place& place, const forms::Control& control, const Fonts& fonts) {
    if (place.width == 0) return 0;
    const auto widest = static_cast<int>(std::max(fonts.extent(captionOf(control), fonts.normal()).cx,
                                                  fonts.extent(place.boldCaption, fonts.bold()).cx));
    return static_cast<unsigned>(MulDiv(widest + 1, USER_DEFAULT_SCREEN_DPI, place.width - besideCaption(control)));
}

void growForCaptions(Fonts& fonts, const FormLayout& layout, const forms::Form& form) {
    for (const Place& place : layout.places) {
        for (const forms::Control* control : form.Controls()) {
            if (control->Name() == place.control) fonts.growScale(scaleFor(place, *control, fonts));
        }
    }
}

bool hasRoom(SIZE size, SIZE room) {
    return size.cx <= room.cx && size.cy <= room.cy;
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

SIZE firstClientSize(const FormLayout& layout, const forms::Form& form, unsigned scale) {
    if (form.clientWidthTwips() == 0) return scaled(layout.first, scale);
    return {scaled(form.clientWidthTwips(), scale, kTwipsPerInch),
            scaled(form.clientHeightTwips(), scale, kTwipsPerInch)};
}

SIZE smallestClientSize(const FormLayout& layout, const forms::Form& form, unsigned scale) {
    return layout.resizable ? scaled(layout.smallest, scale) : firstClientSize(layout, form, scale);
}

Fonts fontsFor(const FormLayout& layout, const forms::Form& form, unsigned dpi, SIZE room) {
    Fonts fonts(dpi);
    growForCaptions(fonts, layout, form);
    while (fonts.scale() > dpi && !hasRoom(smallestClientSize(layout, form, fonts.scale()), room)) {
        fonts = fonts.smaller();
        growForCaptions(fonts, layout, form);
    }
    return fonts;
}

RECT placeIn(SIZE client, const Place& place, const FormLayout& layout, const forms::Control& control, unsigned scale) {
    if (place.width == 0) return fromTwips(control.bounds(), scale);
    const SIZE smallest = scaled(layout.smallest, scale);
    const Span across = spanOf(place.left, place.width, place.horizontal, std::max(0L, client.cx - smallest.cx), scale);
    const Span down = spanOf(place.top, place.height, place.vertical, std::max(0L, client.cy - smallest.cy), scale);
    return {across.from, down.from, across.to, down.to};
}

}  // namespace win32
