#pragma once

#include <cstddef>
#include <functional>
#include <utility>
#include <vector>

#include "base/Text.h"
#include "forms/Color.h"
#include "forms/Control.h"

namespace forms {

/// A list of texts. At most one of them is chosen.
class ComboBox : public Control {
public:
    static constexpr Kind kKind = Kind::ComboBox;

    ComboBox(Form& form, base::Text name) : Control(form, kKind, std::move(name)) {}

    /// Raised after another entry has been chosen, or the choice has been cleared.
    std::function<void()> onClick;

    void AddItem(base::Text text);
    int ListCount() const { return static_cast<int>(entries_.size()); }
    /// @param index  from 0. @throws base::RuntimeError 5 if there is no such entry
    const base::Text& List(int index) const;

    /// The chosen entry from 0, or -1.
    int ListIndex() const { return listIndex_; }
    /// @throws base::RuntimeError 5 if there is no such entry
    void setListIndex(int index);

    Color BackColor() const { return backColor_; }
    void setBackColor(Color color);

    void userSelectedEntry(int index);

private:
    std::vector<base::Text> entries_;
    int listIndex_ = -1;
    Color backColor_ = kWindowBackground;
};

}  // namespace forms
