#pragma once

#include <memory>
#include <vector>

#include "forms/Form.h"
#include "win32/Layout.h"
#include "win32/NativeControl.h"

namespace win32 {

/// The native window of a form, with its native controls: makes them from the layout table, places them, passes the
/// system's messages to the right control, and the keys to the form.
class FormPeer final : public forms::Peer {
public:
    /// Makes the windows, hidden, in the middle of the screen on which the mouse pointer is.
    explicit FormPeer(forms::Form& form);
    ~FormPeer() override;
    FormPeer(const FormPeer&) = delete;
    FormPeer& operator=(const FormPeer&) = delete;

    forms::Form& form() const { return form_; }
    HWND window() const { return window_.get(); }

    void open();
    /// For a form that has been unloaded: the window is hidden and ignores input until its owner deletes it. It is not
    /// deleted at once because a message to one of its controls may be in progress.
    void close();
    bool isClosed() const { return closed_; }

    /// Looks at a message for the window or one of its controls before it is dispatched.
    /// @return true if the message must not be dispatched any more
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
    /// The fonts for a window in this work area of a screen.
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
    std::vector<std::unique_ptr<NativeControl>> controls_;  ///< in the order of the layout
    Window window_;
    Icon bigIcon_;
    Icon smallIcon_;
};

}  // namespace win32
