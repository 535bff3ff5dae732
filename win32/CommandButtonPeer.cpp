#include "win32/CommandButtonPeer.h"

#include "forms/Form.h"
#include "win32/SystemColor.h"
#include "win32/WideText.h"

namespace win32 {

namespace {

// On the pure red of a changed account black has a contrast of 5.25 to 1, white only 4 to 1.
constexpr COLORREF kTextOnColor = RGB(0, 0, 0);

void drawEdge(HDC dc, RECT area, int widthPixels) {
    // Not always black like the text: in some contrast themes the window's background is black.
    const HBRUSH brush = GetSysColorBrush(COLOR_BTNTEXT);
    for (int i = 0; i < widthPixels; ++i) {
        FrameRect(dc, &area, brush);
        InflateRect(&area, -1, -1);
    }
}

}  // namespace

CommandButtonPeer::CommandButtonPeer(forms::CommandButton& button, const Surroundings& surroundings)
    : PeerOn(button, surroundings), button_(button) {
    make(WC_BUTTONW, button.Caption(), WS_TABSTOP | BS_PUSHBUTTON);
    show(forms::Property::FontBold);
    show(forms::Property::BackColor);
}

void CommandButtonPeer::show(forms::Property property) {
    switch (property) {
        case forms::Property::Caption:
            SetWindowTextW(window(), toWide(button_.Caption()).c_str());
            break;
        case forms::Property::BackColor:
        case forms::Property::EnterButton:
            showKind();
            break;
        case forms::Property::FontBold:
            useFonts();
            break;
        case forms::Property::Enabled:
            showEnabled();
            break;
        default:
            break;
    }
}

void CommandButtonPeer::command(WORD code) {
    if (code == BN_CLICKED) button_.userClicked();
}

void CommandButtonPeer::useFonts() {
    send(WM_SETFONT, reinterpret_cast<WPARAM>(button_.FontBold() ? fonts().bold() : fonts().normal()), TRUE);
}

/// Only the button that Enter presses is drawn as the default button. The system does this when the user moves on with
/// Tab, but not when a click or a handler moves the focus; and its new style would end our own painting.
LRESULT CommandButtonPeer::message(UINT message, WPARAM wParam, LPARAM lParam) {
    return PeerOn::message(message, message == BM_SETSTYLE ? kind() : wParam, lParam);
}

WPARAM CommandButtonPeer::kind() const {
    // The system lets the owner paint such a button both with and without visual styles.
    if (button_.isGraphical() && button_.BackColor() != forms::kButtonFace) return BS_OWNERDRAW;
    return button_.form().enterButton() == &button_ ? BS_DEFPUSHBUTTON : BS_PUSHBUTTON;
}

void CommandButtonPeer::showKind() const {
    send(BM_SETSTYLE, kind(), TRUE);
}

void CommandButtonPeer::paint(const DRAWITEMSTRUCT& draw) {
    const HDC dc = draw.hDC;
    RECT area = draw.rcItem;
    const bool pressed = (draw.itemState & ODS_SELECTED) != 0;
    const bool hot = (send(BM_GETSTATE) & BST_HOT) != 0;
    const bool focused = (draw.itemState & ODS_FOCUS) != 0;

    const Brush ground(CreateSolidBrush(presentColor(button_.BackColor())));
    FillRect(dc, &area, ground.get());
    drawEdge(dc, area, fonts().scaled(hot || pressed || focused ? 2 : 1));

    const int inset = fonts().scaled(3);
    InflateRect(&area, -inset, -inset);
    SetTextColor(dc, kTextOnColor);
    SetBkColor(dc, presentColor(button_.BackColor()));
    if (focused && (draw.itemState & ODS_NOFOCUSRECT) == 0) DrawFocusRect(dc, &area);

    if (pressed) OffsetRect(&area, fonts().scaled(1), fonts().scaled(1));
    SetBkMode(dc, TRANSPARENT);
    if (!button_.Enabled()) SetTextColor(dc, GetSysColor(COLOR_GRAYTEXT));
    const Selected font(dc, button_.FontBold() ? fonts().bold() : fonts().normal());
    DrawTextW(dc, toWide(button_.Caption()).c_str(), -1, &area, DT_CENTER | DT_VCENTER | DT_SINGLELINE | DT_NOPREFIX);
}

}  // namespace win32
