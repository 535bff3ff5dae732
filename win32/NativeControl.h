#pragma once

#include "base/Text.h"
#include "forms/Control.h"
#include "forms/Peer.h"
#include "win32/Fonts.h"
#include "win32/SystemHeaders.h"

namespace win32 {

/// What a control's native window is made with.
struct Surroundings {
    HWND form;
    int id;
    const Fonts& fonts;         ///< of the form; replaced in place when its resolution changes
    const wchar_t* spokenName;  ///< may be null
};

/// A native child window that belongs to a control of the model: its making, its messages, its font. The
/// peers of the single kinds derive from it, through PeerOn.
///
/// The form hands down what Windows sends to a parent (commands, notifications, background colours); what is
/// sent to the child itself passes through message().
class NativeControl {
public:
    NativeControl(forms::Control& control, const Surroundings& surroundings);
    virtual ~NativeControl();
    NativeControl(const NativeControl&) = delete;
    NativeControl& operator=(const NativeControl&) = delete;

    HWND window() const { return window_; }
    forms::Control& control() const { return control_; }

    /// WM_COMMAND of this control. @param code  BN_..., EN_...
    virtual void command(WORD) {}
    /// WM_NOTIFY of this control.
    virtual LRESULT notify(NMHDR&) { return 0; }
    /// WM_DRAWITEM of this control, whose style asks for it.
    virtual void paint(const DRAWITEMSTRUCT&) {}
    /// WM_CTLCOLOR...: sets the colours; the brush stays the control's. Null leaves it to the system.
    virtual HBRUSH background(HDC) { return nullptr; }
    /// The form has made its fonts anew.
    virtual void useFonts();
    /// The theme or the system's colours have changed.
    virtual void systemChanged();
    /// The size in pixels that the control needs beyond what its place gives; 0 by 0 for most.
    virtual SIZE neededSize() const { return {0, 0}; }
    /// The height in pixels that fits the control best; it stands in the middle of its place then. 0: its place's.
    virtual int fittingHeight() const { return 0; }

protected:
    const Fonts& fonts() const { return surroundings_.fonts; }
    const wchar_t* spokenName() const { return surroundings_.spokenName; }

    /// Called by the constructors of the kinds.
    void make(const wchar_t* windowClass, base::TextView text, DWORD style, DWORD extendedStyle = 0);
    /// A message to the window itself.
    virtual LRESULT message(UINT message, WPARAM wParam, LPARAM lParam);
    LRESULT send(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) const {
        return SendMessageW(window_, message, wParam, lParam);
    }

    void showEnabled() const { EnableWindow(window_, control_.Enabled() ? TRUE : FALSE); }
    void repaint() const { InvalidateRect(window_, nullptr, TRUE); }
    void focusWindow() const;

private:
    static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id,
                                      DWORD_PTR self);

    forms::Control& control_;
    Surroundings surroundings_;
    HWND window_ = nullptr;  ///< the form's window destroys it
};

/// The part of a peer that is the same for every kind.
template <class Interface>
class PeerOn : public Interface, public NativeControl {
public:
    using NativeControl::NativeControl;

    void takeFocus() override { focusWindow(); }
    void refresh() override { UpdateWindow(window()); }
    forms::NativeHandle handle() const override { return reinterpret_cast<forms::NativeHandle>(window()); }
};

}  // namespace win32
