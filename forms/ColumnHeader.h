#pragma once

#include <cstdint>
#include <utility>

#include "base/Text.h"

namespace forms {

/// A column of a list view, as the form's definition sets it up.
class ColumnHeader {
public:
    enum class Alignment : std::int16_t { Left = 0, Right = 1, Center = 2 };

    ColumnHeader(int index, base::Text text, int widthHimetric, Alignment alignment, base::Text tag)
        : index_(index),
          text_(std::move(text)),
          widthHimetric_(widthHimetric),
          alignment_(alignment),
          tag_(std::move(tag)) {}

    /// From 1. Column 1 shows the rows' text, column k their sub-item k - 1.
    int Index() const { return index_; }
    const base::Text& Text() const { return text_; }
    /// The initial width in hundredths of a millimetre; the native column's width may have changed since.
    int widthHimetric() const { return widthHimetric_; }
    Alignment alignment() const { return alignment_; }
    /// The type of the column's values; empty if it has none.
    const base::Text& Tag() const { return tag_; }

private:
    int index_;
    base::Text text_;
    int widthHimetric_;
    Alignment alignment_;
    base::Text tag_;
};

}  // namespace forms
