#pragma once

#include <functional>
#include <utility>

#include "base/Text.h"
#include "forms/Color.h"
#include "forms/Control.h"

namespace forms {

/// A box with one line of text.
class TextBox : public Control {
public:
    static constexpr Kind kKind = Kind::TextBox;

    TextBox(Form& form, base::Text name) : Control(form, kKind, std::move(name)) {}

    /// Raised after the text has changed.
    std::function<void()> onChange;

    const base::Text& Text() const { return text_; }
    void setText(base::TextView text);

    Color BackColor() const { return backColor_; }
    void setBackColor(Color color);

    /// Shown in place of every character; 0 shows the text itself. Only for the definition: no peer is told.
    char16_t PasswordChar() const { return passwordChar_; }
    void setPasswordChar(char16_t character) { passwordChar_ = character; }

    /// The user has typed: the native box now holds this text. The peer shows it already and is not told.
    void userTyped(base::TextView text);

private:
    base::Text text_;
    Color backColor_ = kWindowBackground;
    char16_t passwordChar_ = 0;
};

}  // namespace forms
