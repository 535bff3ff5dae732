#include "win32/HeaderClicks.h"

namespace win32 {

namespace {

bool isOnDivider(HWND header, LPARAM lParam) {
    HDHITTESTINFO hit{};
    hit.pt = {static_cast<short>(LOWORD(lParam)), static_cast<short>(HIWORD(lParam))};
    SendMessageW(header, HDM_HITTEST, 0, reinterpret_cast<LPARAM>(&hit));
    return (hit.flags & (HHT_ONDIVIDER | HHT_ONDIVOPEN)) != 0;
}

LRESULT CALLBACK headerProcedure(HWND header, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id, DWORD_PTR) {
    if (message == WM_NCDESTROY) RemoveWindowSubclass(header, headerProcedure, id);
    if (message == WM_LBUTTONDBLCLK && !isOnDivider(header, lParam)) message = WM_LBUTTONDOWN;
    return DefSubclassProc(header, message, wParam, lParam);
}

}  // namespace

void takeDoubleClicksAsClicks(HWND header) {
    SetWindowSubclass(header, headerProcedure, 0, 0);
}

}  // namespace win32
