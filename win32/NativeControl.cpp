#include "win32/NativeControl.h"

#include "win32/ErrorBox.h"
#include "win32/WideText.h"

namespace win32 {

NativeControl::NativeControl(forms::Control& control, const Surroundings& surroundings)
    : control_(control), surroundings_(surroundings) {}

NativeControl::~NativeControl() {
    if (window_ != nullptr) RemoveWindowSubclass(window_, procedure, 0);
}

void NativeControl::make(const wchar_t* windowClass, base::TextView text, DWORD style, DWORD extendedStyle) {
    // Each control is a group of its own, so that arrow keys do not move the focus to the next control.
    window_ =
        CreateWindowExW(extendedStyle, windowClass, toWide(text).c_str(), WS_CHILD | WS_VISIBLE | WS_GROUP | style, 0,
                        0, 0, 0, surroundings_.form, reinterpret_cast<HMENU>(static_cast<INT_PTR>(surroundings_.id)),
                        GetModuleHandleW(nullptr), nullptr);
    SetWindowSubclass(window_, procedure, 0, reinterpret_cast<DWORD_PTR>(this));
    send(WM_SETFONT, reinterpret_cast<WPARAM>(fonts().normal()), FALSE);
    showEnabled();
}

void NativeControl::useFonts() {
    send(WM_SETFONT, reinterpret_cast<WPARAM>(fonts().normal()), TRUE);
}

void NativeControl::systemChanged() {
    repaint();
}

void NativeControl::focusWindow() const {
    // A hidden form gets the focus when it is shown.
    if (IsWindowVisible(window_)) SetFocus(window_);
}

LRESULT NativeControl::message(UINT message, WPARAM wParam, LPARAM lParam) {
    const LRESULT result = DefSubclassProc(window_, message, wParam, lParam);
    if (message == WM_SETFOCUS) control_.userFocused();
    return result;
}

LRESULT CALLBACK NativeControl::procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR,
                                          DWORD_PTR self) {
    auto* control = reinterpret_cast<NativeControl*>(self);
    if (message == WM_NCDESTROY) {
        RemoveWindowSubclass(window, procedure, 0);
        control->window_ = nullptr;
        return DefSubclassProc(window, message, wParam, lParam);
    }
    return atBoundary([&] { return control->message(message, wParam, lParam); });
}

}  // namespace win32
