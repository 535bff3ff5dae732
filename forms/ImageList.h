#pragma once

#include <utility>
#include <vector>

#include "forms/Control.h"

namespace forms {

/// The pictures for a list view's column headers, by index from 0. The model says which picture has which index; the
/// native side draws them at the window's resolution.
class ImageList : public Control {
public:
    static constexpr Kind kKind = Kind::ImageList;

    enum class Picture { SortAscending, SortDescending };

    ImageList(Form& form, base::Text name, std::vector<Picture> pictures)
        : Control(form, kKind, std::move(name)), pictures_(std::move(pictures)) {}

    const std::vector<Picture>& pictures() const { return pictures_; }

private:
    std::vector<Picture> pictures_;
};

}  // namespace forms
