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

/// A window of the program: its controls in the order of their definition, the focus, the default and the
/// cancel button, and the events of loading, unloading and keys. Forms derive from it and declare their
/// controls as members.
///
/// Life: made (no native window) - Load: the host makes the native window, hidden, then onLoad runs - Show -
/// Unload: onUnload runs, then the host takes the native window away. The form object stays.
class Form {
public:
    enum class Modality { Modeless, Modal };

    /// State of the keys Shift, Ctrl and Alt as bits.
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

    /// All controls in the order of their definition.
    std::span<Control* const> Controls() const { return controls_; }
    /// The controls that take the focus, enabled or not, in Tab order.
    std::vector<Control*> tabOrder() const;

    /// While true, onKeyDown sees keys before the control that has the focus.
    bool KeyPreview() const { return keyPreview_; }
    void setKeyPreview(bool preview) { keyPreview_ = preview; }

    /// The button that Enter presses while no other has the focus, nothing if there is none.
    CommandButton* defaultButton() const { return defaultButton_; }
    void setDefaultButton(CommandButton& button) { defaultButton_ = &button; }
    /// The button that Enter would press now, enabled or not: the command button that has the focus, otherwise
    /// the default button. It alone looks so.
    CommandButton* enterButton() const;
    /// The button that Escape presses, nothing if there is none.
    CommandButton* cancelButton() const { return cancelButton_; }
    void setCancelButton(CommandButton& button) { cancelButton_ = &button; }

    int clientWidthTwips() const { return clientWidthTwips_; }
    int clientHeightTwips() const { return clientHeightTwips_; }
    /// Belongs to the definition. 0 by 0, the beginning, leaves the size to the host.
    void setClientSize(int widthTwips, int heightTwips);

    bool isLoaded() const { return loaded_; }
    /// Does nothing if the form is loaded already.
    void Load();
    /// Loads the form if that has not been done. A modal call returns once the form is unloaded.
    void Show(Modality modality);
    /// Does nothing if the form is not loaded.
    void Unload();

    /// The control that has the focus, nothing before the form is shown.
    Control* ActiveControl() const { return activeControl_; }

    /// A key went down while the form or one of its controls had the focus; comes before the control sees
    /// it and swallows nothing. Tab, Enter with a default button and Escape with a cancel button go by.
    void userPressedKey(std::int16_t keyCode, std::int16_t shift);
    /// Enter: clicks the command button that has the focus, otherwise the default button; disabled: nothing.
    void userPressedEnter();
    /// Escape: clicks the cancel button wherever the focus is; disabled: nothing.
    void userPressedEscape();
    /// The close box, Alt+F4, another program's wish, or the end of the session.
    void userClosed();

    /// A message box or another box waits for an answer: nothing of the above has an effect, and controls
    /// ignore the user.
    bool isBlocked() const;

    void attachPeer(Peer& peer) { peer_ = &peer; }
    void detachPeer() { peer_ = nullptr; }
    /// The native window, 0 without a peer.
    NativeHandle hWnd() const { return peer_ != nullptr ? peer_->handle() : 0; }

private:
    friend class Control;

    /// Gives the focus to the first enabled control in Tab order; to none if there is none.
    void focusFirstTabStop();
    void setActiveControl(Control* control);
    /// Without moving the native focus.
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
