#include "win32/CommandButtonPeer.h"

#include "win32/SystemColor.h"
#include "win32/WideText.h"

namespace win32 {

namespace {

// On the pure red of a changed account black has a contrast of 5.25 to 1, white only 4.
constexpr COLORREF kTextOnColor = RGB(0, 0, 0);

void drawEdge(HDC dc, RECT area, int widthPixels) {
    const auto* brush = static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH));
    for (int i = 0; i < widthPixels; ++i) {
        FrameRect(dc, &area, const_cast<HBRUSH>(brush));
        InflateRect(&area, -1, -1);
    }
}

}  // namespace

CommandButtonPeer::CommandButtonPeer(forms::CommandButton& button, const Surroundings& surroundings)
    : PeerOn(button, surroundings), button_(button) {
    make(WC_BUTTONW, button.Caption(), WS_TABSTOP | BS_PUSHBUTTON);
    show(forms::Property::FontBold);
}

void CommandButtonPeer::show(forms::Property property) {
    switch (property) {
        case forms::Property::Caption:
            SetWindowTextW(window(), toWide(button_.Caption()).c_str());
            break;
        case forms::Property::BackColor:
            repaint();
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

bool CommandButtonPeer::paintsItself() const {
    return button_.isGraphical() && button_.BackColor() != forms::kButtonFace;
}

LRESULT CommandButtonPeer::notify(NMHDR& header) {
    if (header.code != NM_CUSTOMDRAW || !paintsItself()) return CDRF_DODEFAULT;
    const auto& draw = reinterpret_cast<const NMCUSTOMDRAW&>(header);
    if (draw.dwDrawStage != CDDS_PREPAINT) return CDRF_DODEFAULT;
    paint(draw);
    return CDRF_SKIPDEFAULT;
}

void CommandButtonPeer::paint(const NMCUSTOMDRAW& draw) const {
    const HDC dc = draw.hdc;
    RECT area = draw.rc;
    const bool pressed = (draw.uItemState & CDIS_SELECTED) != 0;
    const bool hot = (draw.uItemState & CDIS_HOT) != 0;
    const bool focused = GetFocus() == window();

    const Brush ground(CreateSolidBrush(presentColor(button_.BackColor())));
    FillRect(dc, &area, ground.get());
    drawEdge(dc, area, fonts().scaled(hot || pressed || focused ? 2 : 1));

    const int inset = fonts().scaled(3);
    InflateRect(&area, -inset, -inset);
    SetTextColor(dc, kTextOnColor);
    SetBkColor(dc, presentColor(button_.BackColor()));
    if (focused && (send(WM_QUERYUISTATE) & UISF_HIDEFOCUS) == 0) DrawFocusRect(dc, &area);

    if (pressed) OffsetRect(&area, fonts().scaled(1), fonts().scaled(1));
    SetBkMode(dc, TRANSPARENT);
    if (!button_.Enabled()) SetTextColor(dc, GetSysColor(COLOR_GRAYTEXT));
    const Selected font(dc, button_.FontBold() ? fonts().bold() : fonts().normal());
    DrawTextW(dc, toWide(button_.Caption()).c_str(), -1, &area, DT_CENTER | DT_VCENTER | DT_SINGLELINE | DT_NOPREFIX);
}

}  // namespace win32
