#pragma once

#include "base/Text.h"
#include "forms/Bounds.h"
#include "forms/Peer.h"

namespace forms {

class Form;

/// The kinds of control. Loops over "every control of the form" check them.
enum class Kind { TextBox, CheckBox, CommandButton, ComboBox, OptionButton, Label, Frame, ListView, ImageList };

/// What all controls of a form have in common. A control is a plain object. Its properties are the truth; a native
/// window (its peer) only shows them, and without a peer the control behaves the same.
///
/// Every setter does these steps in this order: return if the value is equal; store it; tell the peer; raise the event.
/// So an event comes once, whether code or the user made the change, and only if something changed. Events are public
/// function objects named on... The user's input comes in through functions named user... A disabled control ignores
/// them, and every control ignores them while a box is open: a command that waits for the box's answer must find the
/// form unchanged. Code can change the controls in both cases.
///
/// A control registers itself with its form when it is made. So controls declared as members of a form have the form's
/// order of definition.
/// order of definition.
class Control {
public:
    Control(Form& form, Kind kind, base::Text name);
    virtual ~Control();
    Control(const Control&) = delete;
    Control& operator=(const Control&) = delete;

    Form& form() const { return form_; }
    Kind kind() const { return kind_; }
    const base::Text& Name() const { return name_; }

    bool Enabled() const { return enabled_; }
    /// If the control has the focus and is disabled, the focus first goes to the form's first tab stop.
    void setEnabled(bool enabled);

    /// Gives the control the focus. @throws base::RuntimeError 5 if it is disabled or takes no focus
    void SetFocus();
    bool hasFocus() const;
    /// Paints at once whatever is out of date.
    void Refresh();

    /// Place in the Tab order, which differs from the order of definition. The form's smallest number comes first.
    int TabIndex() const { return tabIndex_; }
    void setTabIndex(int tabIndex) { tabIndex_ = tabIndex; }
    /// Whether this kind takes the focus; labels, frames and image lists do not.
    bool canTakeFocus() const;

    const Bounds& bounds() const { return bounds_; }
    /// Only for the definition of a form: no peer is told.
    void setBounds(const Bounds& bounds) { bounds_ = bounds; }

    /// The user moved the focus here, by Tab or mouse.
    void userFocused();

    /// The peer must outlive its attachment. It read the properties when it was made, so it is not told of them now.
    void attachPeer(Peer& peer) { peer_ = &peer; }
    void detachPeer() { peer_ = nullptr; }
    /// The native window; 0 without a peer.
    NativeHandle hWnd() const { return peer_ != nullptr ? peer_->handle() : 0; }

protected:
    /// Whether the user's input has an effect now.
    bool takesInput() const;
    /// The same, for input that has already changed what the native window shows: if it has no effect, the peer is told
    /// to show the model again.
    bool takesInput(Property changed) const;
    void tellPeer(Property property) const {
        if (peer_ != nullptr) peer_->show(property);
    }

private:
    friend class Form;

    Form& form_;
    Kind kind_;
    base::Text name_;
    bool enabled_ = true;
    int tabIndex_ = 0;
    Bounds bounds_;
    Peer* peer_ = nullptr;
};

/// The control as its own type, null if it is of another kind: `if (auto* box = as<TextBox>(control))`.
template <class T>
T* as(Control& control) {
    return control.kind() == T::kKind ? static_cast<T*>(&control) : nullptr;
}

}  // namespace forms
