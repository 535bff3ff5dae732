#include "forms/Control.h"

#include <algorithm>
#include <utility>

#include "base/RuntimeError.h"
#include "forms/Form.h"

namespace forms {

Control::Control(Form& form, Kind kind, base::Text name) : form_(form), kind_(kind), name_(std::move(name)) {
    form_.controls_.push_back(this);
}

Control::~Control() {
    std::erase(form_.controls_, this);
    if (form_.activeControl_ == this) form_.activeControl_ = nullptr;
}

void Control::setEnabled(bool enabled) {
    if (enabled == enabled_) return;
    enabled_ = enabled;
    // If a native window with the focus is disabled, nothing has the focus and the keyboard is dead.
    if (!enabled && hasFocus()) form_.focusFirstTabStop();
    tellPeer(Property::Enabled);
}

void Control::SetFocus() {
    if (!enabled_ || !canTakeFocus()) throw base::runtimeError(base::RuntimeErrorNumber::InvalidProcedureCall);
    form_.setActiveControl(this);
}

bool Control::hasFocus() const {
    return form_.activeControl_ == this;
}

void Control::Refresh() {
    if (peer_ != nullptr) peer_->refresh();
}

bool Control::canTakeFocus() const {
    return kind_ != Kind::Label && kind_ != Kind::Frame && kind_ != Kind::ImageList;
}

bool Control::takesInput() const {
    return enabled_ && !form_.isBlocked();
}

bool Control::takesInput(Property changed) const {
    const bool counts = takesInput();
    if (!counts) tellPeer(changed);
    return counts;
}

void Control::userFocused() {
    if (enabled_ && canTakeFocus()) form_.noteActiveControl(this);
}

}  // namespace forms
