#pragma once

#include <functional>
#include <utility>

#include "base/Text.h"
#include "forms/Control.h"

namespace forms {

/// One of several choices: at most one of the form's option buttons is on.
class OptionButton : public Control {
public:
    static constexpr Kind kKind = Kind::OptionButton;

    OptionButton(Form& form, base::Text name, base::Text caption)
        : Control(form, kKind, std::move(name)), caption_(std::move(caption)) {}

    /// Raised after the button has been switched on.
    std::function<void()> onClick;

    bool Value() const { return value_; }
    /// Switching on switches the form's other option buttons off.
    void setValue(bool value);

    const base::Text& Caption() const { return caption_; }

    void userClicked();

private:
    base::Text caption_;
    bool value_ = false;
};

}  // namespace forms
