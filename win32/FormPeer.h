#pragma once

#include <memory>
#include <vector>

#include "forms/Form.h"
#include "win32/Layout.h"
#include "win32/NativeControl.h"

namespace win32 {

/// The native window of a form, with the native controls in it: makes them from the layout table, places
/// them, hands the system's messages to the control they are meant for, and the keys to the form.
class FormPeer final : public forms::Peer {
public:
    /// Makes the windows, hidden, in the middle of the screen that has the mouse pointer.
    explicit FormPeer(forms::Form& form);
    ~FormPeer() override;
    FormPeer(const FormPeer&) = delete;
    FormPeer& operator=(const FormPeer&) = delete;

    forms::Form& form() const { return form_; }
    HWND window() const { return window_.get(); }

    void open();
    /// The form is unloaded: the window is hidden and deaf until its owner deletes it, since a message to one
    /// of its controls may be under way.
    void close();
    bool isClosed() const { return closed_; }

    /// A message for the window or one of its controls, before it is handed on.
    /// @return true if it is done with
    bool preview(const MSG& message);

    void show(forms::Property property) override;
    void takeFocus() override;
    void refresh() override;
    forms::NativeHandle handle() const override;

private:
    static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

    void makeWindow();
    void makeControls();
    void showIcons();
    /// The fonts for a window on that part of a screen.
    Fonts fontsOn(const RECT& workArea, unsigned dpi) const;
    SIZE windowSize(SIZE client, unsigned dpi) const;
    void moveTo(const RECT& rect);
    void centre();
    void placeControls();
    void useFonts();
    void focusActiveControl();

    LRESULT message(UINT message, WPARAM wParam, LPARAM lParam);
    NativeControl* controlOf(HWND window) const;
    void closedByUser();
    void dpiChanged(unsigned dpi, const RECT& suggested);
    void settingsChanged();
    void limitSize(MINMAXINFO& limits) const;
    void systemChanged(UINT message, WPARAM wParam, LPARAM lParam);

    forms::Form& form_;
    const FormLayout& layout_;
    Fonts fonts_{USER_DEFAULT_SCREEN_DPI};
    DWORD style_ = 0;
    bool closed_ = false;
    std::vector<std::unique_ptr<NativeControl>> controls_;  ///< in the layout's order
    Window window_;
    Icon bigIcon_;
    Icon smallIcon_;
};

}  // namespace win32
