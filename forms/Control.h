#pragma once

#include "base/Text.h"
#include "forms/Bounds.h"
#include "forms/Peer.h"

namespace forms {

class Form;

/// The kinds of control; loops over "every control of the form" ask for them.
enum class Kind { TextBox, CheckBox, CommandButton, ComboBox, OptionButton, Label, Frame, ListView, ImageList };

/// What all controls of a form have in common. A control is a plain object: its properties are the truth,
/// a native window (its peer) shows them, and without a peer it behaves the same.
///
/// The law of every setter, in this order: equal to what is there, return; store; tell the peer; raise the
/// event. So an event comes once, whether code or the user made the change, and only when there was one.
/// Events are public function objects named on...; the user's input comes in through functions named
/// user..., which a disabled control ignores, and every control while a box is open: a command that waits for
/// its answer must find the form as it left it. Code reaches the controls in both cases.
///
/// A control enrols itself with its form when it is made: members declared in a form stand in the form's
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
    /// Takes the focus away first if the control has it: it goes to the form's first tab stop.
    void setEnabled(bool enabled);

    /// Gives the control the focus. @throws base::RuntimeError 5 if it is disabled or takes no focus
    void SetFocus();
    bool hasFocus() const;
    /// Paints at once what is out of date.
    void Refresh();

    /// Place in the Tab order, which is apart from the order of definition. The form's smallest comes first.
    int TabIndex() const { return tabIndex_; }
    void setTabIndex(int tabIndex) { tabIndex_ = tabIndex; }
    /// Whether the kind takes the focus at all; labels, frames and image lists do not.
    bool canTakeFocus() const;

    const Bounds& bounds() const { return bounds_; }
    /// Belongs to the definition of a form: no peer is told.
    void setBounds(const Bounds& bounds) { bounds_ = bounds; }

    /// The user moved the focus here, by Tab or mouse.
    void userFocused();

    /// The peer outlives its attachment; it has read the properties itself when it was made.
    void attachPeer(Peer& peer) { peer_ = &peer; }
    void detachPeer() { peer_ = nullptr; }
    /// The native window, 0 without a peer.
    NativeHandle hWnd() const { return peer_ != nullptr ? peer_->handle() : 0; }

protected:
    /// Whether the user's input counts.
    bool takesInput() const;
    /// The same for input that has changed what the native window shows: if it does not count, the peer is
    /// told to show the model again.
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

/// The control as its own kind, nothing if it is of another: `if (auto* box = as<TextBox>(control))`.
template <class T>
T* as(Control& control) {
    return control.kind() == T::kKind ? static_cast<T*>(&control) : nullptr;
}

}  // namespace forms
