#include "forms/CommandButton.h"

#include <utility>

namespace forms {

CommandButton::CommandButton(Form& form, base::Text name, base::Text caption, Style style)
    : Control(form, kKind, std::move(name)), caption_(std::move(caption)), style_(style) {}

void CommandButton::setCaption(base::TextView caption) {
    if (caption == caption_) return;
    caption_ = caption;
    tellPeer(Property::Caption);
}

void CommandButton::setBackColor(Color color) {
    if (color == backColor_) return;
    backColor_ = color;
    tellPeer(Property::BackColor);
}

void CommandButton::setFontBold(bool bold) {
    if (bold == fontBold_) return;
    fontBold_ = bold;
    tellPeer(Property::FontBold);
}

void CommandButton::userClicked() {
    if (takesInput() && onClick) onClick();
}

}  // namespace forms
