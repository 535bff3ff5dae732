#pragma once

#include <cstdint>

#include "base/Text.h"
#include "base/Value.h"

namespace forms {

class ListView;

/// A row of a list view, as a light handle that may be copied. It refers to the row, not to its place, so it stays
/// valid when the list is sorted. After the list has been cleared, using it raises 35601.
class ListItem {
public:
    /// The first column.
    base::TextView Text() const;
    void setText(base::TextView text);

    /// The text of column index + 1, index from 1; empty if never set. Valid until the row is changed.
    /// @throws base::RuntimeError 35600 below 1
    base::TextView SubItems(int index) const;
    void setSubItems(int index, base::TextView text);

    /// Empty if the row has none.
    base::TextView Key() const;
    /// Must be unique in the list, ignoring ASCII case.
    /// @throws base::RuntimeError 35602 if another row has it, 35603 if it reads as a number
    void setKey(base::TextView key);

    const base::Value& Tag() const;
    void setTag(base::Value tag);

    /// Place in the current order, from 1.
    int Index() const;
    bool Selected() const;
    /// Selects the row. This is done by code, so ItemClick is not raised.
    void Select();
    /// Scrolls as little as necessary.
    void EnsureVisible();

    friend bool operator==(const ListItem& a, const ListItem& b) {
        return a.list_ == b.list_ && a.row_ == b.row_ && a.filling_ == b.filling_;
    }

private:
    friend class ListView;
    ListItem(ListView& list, std::uint32_t row, std::uint32_t filling) : list_(&list), row_(row), filling_(filling) {}

    ListView* list_;
    std::uint32_t row_;
    std::uint32_t filling_;  ///< how often the list had been cleared when the handle was made
};

}  // namespace forms
