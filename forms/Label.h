#pragma once

#include <utility>

#include "base/Text.h"
#include "forms/Control.h"

namespace forms {

/// A text beside other controls.
class Label : public Control {
public:
    static constexpr Kind kKind = Kind::Label;

    Label(Form& form, base::Text name, base::Text caption)
        : Control(form, kKind, std::move(name)), caption_(std::move(caption)) {}

    const base::Text& Caption() const { return caption_; }

private:
    base::Text caption_;
};

}  // namespace forms
