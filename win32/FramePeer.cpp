#include "win32/FramePeer.h"

namespace win32 {

FramePeer::FramePeer(forms::Frame& frame, const Surroundings& surroundings) : PeerOn(frame, surroundings) {
    make(WC_BUTTONW, frame.Caption(), BS_GROUPBOX | WS_CLIPSIBLINGS);
}

void FramePeer::show(forms::Property property) {
    if (property == forms::Property::Enabled) showEnabled();
}

LRESULT FramePeer::message(UINT message, WPARAM wParam, LPARAM lParam) {
    // The form does not paint where its children are, and the system paints only the line of a frame.
    if (message == WM_ERASEBKGND) {
        RECT area{};
        GetClientRect(window(), &area);
        FillRect(reinterpret_cast<HDC>(wParam), &area, GetSysColorBrush(COLOR_BTNFACE));
        return TRUE;
    }
    return PeerOn::message(message, wParam, lParam);
}

}  // namespace win32
