#pragma once

#include "base/Text.h"
#include "forms/Control.h"
#include "forms/Peer.h"
#include "win32/Fonts.h"
#include "win32/SystemHeaders.h"

namespace win32 {

/// What the native window of a control needs when it is made.
struct Surroundings {
    HWND form;
    int id;
    const Fonts& fonts;         ///< the form's; replaced in place when the form's resolution changes
    const wchar_t* spokenName;  ///< may be null
};

/// A native child window that belongs to a control of the model: how it is made, its messages, its font. The peers of
/// the different kinds derive from it through PeerOn.
///
/// The form passes on what Windows sends to a parent (commands, notifications, background colours); what is sent to the
/// child itself goes to message().
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
    /// WM_DRAWITEM of this control, if its style requests it.
    virtual void paint(const DRAWITEMSTRUCT&) {}
    /// WM_CTLCOLOR...: sets the colours; the control keeps owning the brush. Null lets the system choose.
    virtual HBRUSH background(HDC) { return nullptr; }
    /// The form has made new fonts.
    virtual void useFonts();
    /// The theme or the system's colours have changed.
    virtual void systemChanged();
    /// The size in pixels that the control needs if its place is smaller; 0 by 0 for most.
    virtual SIZE neededSize() const { return {0, 0}; }
    /// The best height for the control, which is then centred in its place. 0: the height of its place.
    virtual int fittingHeight() const { return 0; }

protected:
    const Fonts& fonts() const { return surroundings_.fonts; }
    const wchar_t* spokenName() const { return surroundings_.spokenName; }

    /// Called by the constructors of derived classes.
    void make(const wchar_t* windowClass, base::TextView text, DWORD style, DWORD extendedStyle = 0);
    /// A message sent to the window itself.
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

/// The part of a peer that is the same for all kinds.
template <class Interface>
class PeerOn : public Interface, public NativeControl {
public:
    using NativeControl::NativeControl;

    void takeFocus() override { focusWindow(); }
    void refresh() override { UpdateWindow(window()); }
    forms::NativeHandle handle() const override { return reinterpret_cast<forms::NativeHandle>(window()); }
};

}  // namespace win32
