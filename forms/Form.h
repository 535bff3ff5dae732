#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "base/Text.h"
#include "forms/Peer.h"

namespace forms {

class CommandButton;
class Control;
class FormHost;

/// A window of the program: its controls in order of definition, the focus, the default and the cancel button, and the
/// events of loading, unloading and keys. Forms derive from it and declare their controls as members.
///
/// Life of a form: it is made, without a native window. Load: the host makes the native window, hidden, then onLoad
/// runs. Show. Unload: onUnload runs, then the host removes the native window. The form object stays.
class Form {
public:
    enum class Modality { Modeless, Modal };

    /// Bits for the state of the keys Shift, Ctrl and Alt.
    static constexpr std::int16_t kShiftMask = 1;
    static constexpr std::int16_t kCtrlMask = 2;
    static constexpr std::int16_t kAltMask = 4;

    Form(FormHost& host, base::Text name, base::Text caption);
    virtual ~Form();
    Form(const Form&) = delete;
    Form& operator=(const Form&) = delete;

    std::function<void()> onLoad;
    std::function<void()> onUnload;
    std::function<void(std::int16_t keyCode, std::int16_t shift)> onKeyDown;

    const base::Text& Name() const { return name_; }
    const base::Text& Caption() const { return caption_; }
    void setCaption(base::TextView caption);

    /// All controls in order of definition.
    std::span<Control* const> Controls() const { return controls_; }
    /// The controls that can take the focus, enabled or not, in Tab order.
    std::vector<Control*> tabOrder() const;

    /// While true, onKeyDown sees keys before the focused control does.
    bool KeyPreview() const { return keyPreview_; }
    void setKeyPreview(bool preview) { keyPreview_ = preview; }

    /// The button that Enter presses unless another button has the focus; null if there is none.
    CommandButton* defaultButton() const { return defaultButton_; }
    void setDefaultButton(CommandButton& button) { defaultButton_ = &button; }
    /// The button that Enter would press now, enabled or not: the focused command button, otherwise the default button.
    /// No other button is drawn as the default one.
    CommandButton* enterButton() const;
    /// The button that Escape presses; null if there is none.
    CommandButton* cancelButton() const { return cancelButton_; }
    void setCancelButton(CommandButton& button) { cancelButton_ = &button; }

    int clientWidthTwips() const { return clientWidthTwips_; }
    int clientHeightTwips() const { return clientHeightTwips_; }
    /// Only for the form's definition. 0 by 0, the initial value, lets the host choose the size.
    void setClientSize(int widthTwips, int heightTwips);

    bool isLoaded() const { return loaded_; }
    /// Does nothing if the form is already loaded.
    void Load();
    /// Loads the form first if necessary. A modal call returns once the form is unloaded.
    void Show(Modality modality);
    /// Does nothing if the form is not loaded.
    void Unload();

    /// The control that has the focus; null before the form is shown.
    Control* ActiveControl() const { return activeControl_; }

    /// A key went down while the form or one of its controls had the focus. Called before the control gets the key; the
    /// control gets it in any case. Not called for Tab, for Enter with a default button, or for Escape with a cancel
    /// button.
    void userPressedKey(std::int16_t keyCode, std::int16_t shift);
    /// Enter: clicks the focused command button, otherwise the default button; nothing happens if that is disabled.
    void userPressedEnter();
    /// Escape: clicks the cancel button wherever the focus is; nothing happens if that is disabled.
    void userPressedEscape();
    /// The user clicked the close box or pressed Alt+F4, another program asked, or the session ends.
    void userClosed();

    /// Whether a message box or another box waits for an answer. Meanwhile the user... functions of the form and of its
    /// controls have no effect.
    bool isBlocked() const;

    void attachPeer(Peer& peer) { peer_ = &peer; }
    void detachPeer() { peer_ = nullptr; }
    /// The native window; 0 without a peer.
    NativeHandle hWnd() const { return peer_ != nullptr ? peer_->handle() : 0; }

private:
    friend class Control;

    /// Gives the focus to the first enabled control in Tab order; to no control if all are disabled.
    void focusFirstTabStop();
    void setActiveControl(Control* control);
    /// Notes which control has the focus, without moving the native focus.
    void noteActiveControl(Control* control);

    FormHost& host_;
    base::Text name_;
    base::Text caption_;
    std::vector<Control*> controls_;
    Control* activeControl_ = nullptr;
    CommandButton* defaultButton_ = nullptr;
    CommandButton* cancelButton_ = nullptr;
    int clientWidthTwips_ = 0;
    int clientHeightTwips_ = 0;
    bool keyPreview_ = false;
    bool loaded_ = false;
    Peer* peer_ = nullptr;
};

}  // namespace forms
