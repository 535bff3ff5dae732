#include "forms/CheckBox.h"

#include <cassert>
#include <utility>

namespace forms {

CheckBox::CheckBox(Form& form, base::Text name, base::Text caption, Style style)
    : Control(form, kKind, std::move(name)), caption_(std::move(caption)), style_(style) {}

void CheckBox::setValue(std::int16_t value) {
    assert(value == kUnchecked || value == kChecked);
    if (value == value_) return;
    value_ = value;
    tellPeer(Property::Value);
    if (onClick) onClick();
}

void CheckBox::setCaption(base::TextView caption) {
    if (caption == caption_) return;
    caption_ = caption;
    tellPeer(Property::Caption);
}

void CheckBox::userClicked() {
    if (takesInput(Property::Value)) setValue(value_ == kUnchecked ? kChecked : kUnchecked);
}

}  // namespace forms
