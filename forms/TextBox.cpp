#include "forms/TextBox.h"

namespace forms {

void TextBox::setText(base::TextView text) {
    if (text == text_) return;
    text_ = text;
    tellPeer(Property::Text);
    if (onChange) onChange();
}

void TextBox::setBackColor(Color color) {
    if (color == backColor_) return;
    backColor_ = color;
    tellPeer(Property::BackColor);
}

void TextBox::userTyped(base::TextView text) {
    if (text == text_ || !takesInput(Property::Text)) return;
    text_ = text;
    if (onChange) onChange();
}

}  // namespace forms
