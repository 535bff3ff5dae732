#include "forms/OptionButton.h"

#include "forms/Form.h"

namespace forms {

void OptionButton::setValue(bool value) {
    if (value == value_) return;
    value_ = value;
    tellPeer(Property::Value);
    if (!value) return;
    for (Control* control : form().Controls()) {
        auto* other = as<OptionButton>(*control);
        if (other != nullptr && other != this) other->setValue(false);
    }
    if (onClick) onClick();
}

void OptionButton::userClicked() {
    if (takesInput(Property::Value)) setValue(true);
}

}  // namespace forms
