#include "win32/TextBoxPeer.h"

#include "win32/SystemColor.h"
#include "win32/WideText.h"

namespace win32 {

TextBoxPeer::TextBoxPeer(forms::TextBox& box, const Surroundings& surroundings) : PeerOn(box, surroundings), box_(box) {
    const bool hidden = box.PasswordChar() != 0;
    make(WC_EDITW, box.Text(), WS_TABSTOP | ES_LEFT | ES_AUTOHSCROLL | (hidden ? ES_PASSWORD : 0), WS_EX_CLIENTEDGE);
    if (hidden) send(EM_SETPASSWORDCHAR, box.PasswordChar());
}

void TextBoxPeer::show(forms::Property property) {
    switch (property) {
        case forms::Property::Text:
            fromCode_ = true;
            SetWindowTextW(window(), toWide(box_.Text()).c_str());
            fromCode_ = false;
            break;
        case forms::Property::Enabled:
            showEnabled();
            break;
        case forms::Property::BackColor:
            repaint();
            break;
        default:
            break;
    }
}

void TextBoxPeer::command(WORD code) {
    if (code == EN_CHANGE && !fromCode_) box_.userTyped(textOf(window()));
}

int TextBoxPeer::fittingHeight() const {
    const int edge = GetSystemMetricsForDpi(SM_CYEDGE, fonts().dpi());
    return static_cast<int>(fonts().extent(u"Ag", fonts().normal()).cy) + 2 * (edge + 1);
}

HBRUSH TextBoxPeer::background(HDC dc) {
    const forms::Color color = box_.BackColor();
    SetBkColor(dc, presentColor(color));
    // A fixed background needs a fixed text colour. The text of a disabled box is grey whatever is set here.
    SetTextColor(dc, isSystemColor(color) ? GetSysColor(COLOR_WINDOWTEXT) : RGB(0, 0, 0));
    if (isSystemColor(color)) return GetSysColorBrush(systemColorIndex(color));
    if (!brush_ || brushColor_ != color) {
        brush_ = Brush(CreateSolidBrush(color));
        brushColor_ = color;
    }
    return brush_.get();
}

}  // namespace win32
