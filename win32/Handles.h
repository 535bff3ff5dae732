#pragma once

#include <utility>

#include "win32/SystemHeaders.h"

/// Owners of the system's handles: each handle is released automatically and exactly once. No other code in the program
/// calls a release function.
namespace win32 {

template <class Handle, auto release>
class Owned {
public:
    Owned() = default;
    explicit Owned(Handle handle) : handle_(handle) {}
    Owned(Owned&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
    Owned& operator=(Owned&& other) noexcept {
        std::swap(handle_, other.handle_);
        return *this;
    }
    Owned(const Owned&) = delete;
    Owned& operator=(const Owned&) = delete;
    ~Owned() {
        if (handle_ != nullptr) release(handle_);
    }

    Handle get() const { return handle_; }
    explicit operator bool() const { return handle_ != nullptr; }

private:
    Handle handle_ = nullptr;
};

namespace release {
inline void window(HWND handle) {
    DestroyWindow(handle);
}
inline void font(HFONT handle) {
    DeleteObject(handle);
}
inline void brush(HBRUSH handle) {
    DeleteObject(handle);
}
inline void bitmap(HBITMAP handle) {
    DeleteObject(handle);
}
inline void icon(HICON handle) {
    DestroyIcon(handle);
}
inline void imageList(HIMAGELIST handle) {
    ImageList_Destroy(handle);
}
inline void memoryDc(HDC handle) {
    DeleteDC(handle);
}
}  // namespace release

using Window = Owned<HWND, release::window>;
using Font = Owned<HFONT, release::font>;
using Brush = Owned<HBRUSH, release::brush>;
using Bitmap = Owned<HBITMAP, release::bitmap>;
using Icon = Owned<HICON, release::icon>;
using IconList = Owned<HIMAGELIST, release::imageList>;
using MemoryDc = Owned<HDC, release::memoryDc>;

/// The device context of a window, with a font or another object selected into it as long as this lives.
class WindowDc {
public:
    WindowDc(HWND window, HGDIOBJ object) : window_(window), dc_(GetDC(window)), former_(SelectObject(dc_, object)) {}
    WindowDc(const WindowDc&) = delete;
    WindowDc& operator=(const WindowDc&) = delete;
    ~WindowDc() {
        SelectObject(dc_, former_);
        ReleaseDC(window_, dc_);
    }

    HDC get() const { return dc_; }

private:
    HWND window_;
    HDC dc_;
    HGDIOBJ former_;
};

/// An object selected into a device context until the end of the scope.
class Selected {
public:
    Selected(HDC dc, HGDIOBJ object) : dc_(dc), former_(SelectObject(dc, object)) {}
    Selected(const Selected&) = delete;
    Selected& operator=(const Selected&) = delete;
    ~Selected() { SelectObject(dc_, former_); }

private:
    HDC dc_;
    HGDIOBJ former_;
};

}  // namespace win32
