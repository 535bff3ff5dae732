#include "forms/ComboBox.h"

#include "base/RuntimeError.h"

namespace forms {

void ComboBox::AddItem(base::Text text) {
    entries_.push_back(std::move(text));
    tellPeer(Property::Rows);
}

const base::Text& ComboBox::List(int index) const {
    if (index < 0 || index >= ListCount()) {
        throw base::runtimeError(base::RuntimeErrorNumber::InvalidProcedureCall);
    }
    return entries_[static_cast<std::size_t>(index)];
}

void ComboBox::setListIndex(int index) {
    if (index == listIndex_) return;
    if (index < -1 || index >= ListCount()) {
        throw base::runtimeError(base::RuntimeErrorNumber::InvalidProcedureCall);
    }
    listIndex_ = index;
    tellPeer(Property::ListIndex);
    if (onClick) onClick();
}

void ComboBox::setBackColor(Color color) {
    if (color == backColor_) return;
    backColor_ = color;
    tellPeer(Property::BackColor);
}

void ComboBox::userSelectedEntry(int index) {
    if (takesInput(Property::ListIndex)) setListIndex(index);
}

}  // namespace forms
