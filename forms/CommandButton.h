#pragma once

#include <functional>

#include "base/Text.h"
#include "forms/Color.h"
#include "forms/Control.h"

namespace forms {

/// A push button. Its background colour is visible in the graphical style only.
class CommandButton : public Control {
public:
    static constexpr Kind kKind = Kind::CommandButton;

    enum class Style { Standard, Graphical };

    CommandButton(Form& form, base::Text name, base::Text caption, Style style = Style::Standard);

    std::function<void()> onClick;

    const base::Text& Caption() const { return caption_; }
    void setCaption(base::TextView caption);

    Color BackColor() const { return backColor_; }
    void setBackColor(Color color);

    bool FontBold() const { return fontBold_; }
    void setFontBold(bool bold);

    bool isGraphical() const { return style_ == Style::Graphical; }

    /// The user clicked the button, or pressed Space or Enter on it.
    void userClicked();

private:
    base::Text caption_;
    Style style_;
    Color backColor_ = kButtonFace;
    bool fontBold_ = false;
};

}  // namespace forms
