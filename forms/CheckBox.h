#pragma once

#include <cstdint>
#include <functional>

#include "base/Text.h"
#include "forms/Control.h"

namespace forms {

/// A check box; in its graphical style, a push button that stays pressed while it is on.
class CheckBox : public Control {
public:
    static constexpr Kind kKind = Kind::CheckBox;
    static constexpr std::int16_t kUnchecked = 0;
    static constexpr std::int16_t kChecked = 1;

    enum class Style { Standard, Graphical };

    CheckBox(Form& form, base::Text name, base::Text caption, Style style = Style::Standard);

    /// Raised after the value has changed.
    std::function<void()> onClick;

    std::int16_t Value() const { return value_; }
    void setValue(std::int16_t value);

    const base::Text& Caption() const { return caption_; }
    void setCaption(base::TextView caption);

    bool isGraphical() const { return style_ == Style::Graphical; }

    /// The user clicked or pressed Space: the value is toggled here. The native box must not toggle by itself.
    void userClicked();

private:
    base::Text caption_;
    Style style_;
    std::int16_t value_ = kUnchecked;
};

}  // namespace forms
