#pragma once

namespace forms {

class Form;

/// Shows forms: the narrow interface behind which native windows, or a test, stand.
class FormHost {
public:
    /// A box that is no form, such as a message box, waits for the user's answer as long as this lives.
    class OpenBox {
    public:
        explicit OpenBox(FormHost& host) : host_(host) { ++host_.openBoxCount_; }
        ~OpenBox() { --host_.openBoxCount_; }
        OpenBox(const OpenBox&) = delete;
        OpenBox& operator=(const OpenBox&) = delete;

    private:
        FormHost& host_;
    };

    virtual ~FormHost() = default;
    /// The form is about to run its load handler: its native window and those of its controls are made now,
    /// hidden, and attached as peers.
    virtual void load(Form& form) = 0;
    /// Shows the loaded form and returns once it is unloaded; no other form takes input meanwhile.
    virtual void showModal(Form& form) = 0;
    /// Shows the loaded form and returns at once.
    virtual void show(Form& form) = 0;
    /// The form has run its unload handler: its window goes, and with the last one the program ends. The
    /// call may come from a handler of one of its controls.
    virtual void unloaded(Form& form) = 0;

    /// While true, the forms take nothing from the user.
    bool hasOpenBox() const { return openBoxCount_ > 0; }

private:
    int openBoxCount_ = 0;
};

}  // namespace forms
