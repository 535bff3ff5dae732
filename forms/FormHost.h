#pragma once

namespace forms {

class Form;

/// Shows forms. Native windows implement this interface; so does a fake for tests.
class FormHost {
public:
    /// While an object of this class lives, a box that is not a form, such as a message box, waits for the user's
    /// answer.
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
    /// Called before the form's load handler runs: makes the form's native window and those of its controls, hidden,
    /// and attaches them as peers.
    virtual void load(Form& form) = 0;
    /// Shows the loaded form and returns once it is unloaded; no other form takes input meanwhile.
    virtual void showModal(Form& form) = 0;
    /// Shows the loaded form and returns at once.
    virtual void show(Form& form) = 0;
    /// Called after the form's unload handler: removes the window; after the last one the program ends. The caller may
    /// be a handler of one of the form's controls.
    virtual void unloaded(Form& form) = 0;

    /// While true, the forms ignore the user.
    bool hasOpenBox() const { return openBoxCount_ > 0; }

private:
    int openBoxCount_ = 0;
};

}  // namespace forms
