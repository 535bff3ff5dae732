#pragma once

#include "win32/SystemHeaders.h"

namespace win32 {

/// The selection of a native virtual list in which at most one row is selected: rows from 0, -1 for no row.
///
/// When another row is selected, a native list may look at each of its rows to deselect the former one; and when asked
/// for the selected row, it may search all rows. So the former row is deselected before another is selected, and the
/// selected row is first looked for where it should be.
class ListSelection {
public:
    /// Does not own the window.
    void attach(HWND list) { list_ = list; }

    /// @param expected  the row to look at first; -1 for no row
    int row(int expected) const;
    int focusedRow() const;
    /// Selects the row, gives it the focus, and removes both from all other rows.
    void show(int row) const;
    /// Does not move the focus. Deselecting a row is fast however long the list is.
    void setSelected(int row, bool selected) const;

    /// Whether the native list will select a row for this message, as far as that can be known before: not for a
    /// letter.
    bool willSelect(UINT message, WPARAM wParam, LPARAM lParam) const;

private:
    bool isSelected(int row) const;
    bool keyWillSelect(WPARAM key) const;
    int rowAt(LPARAM point) const;
    void setState(int row, UINT state, UINT mask) const;

    HWND list_ = nullptr;
};

}  // namespace win32
