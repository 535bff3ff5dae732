#pragma once

#include "win32/SystemHeaders.h"

namespace win32 {

/// The selection that a native virtual list of single selection holds: rows from 0, -1 for none.
///
/// A native list may look at each of its rows to take the selection from the former one when another is selected, and
/// to find the selected one when it is asked. So the former row is deselected before another is selected, and the row
/// is looked for where it should be.
class ListSelection {
public:
    /// The window is not owned.
    void attach(HWND list) { list_ = list; }

    /// @param expected  where the row is looked for first, -1 for nowhere
    int row(int expected) const;
    int focusedRow() const;
    /// Selects the row, gives it the focus, and takes both from every other.
    void show(int row) const;
    /// Leaves the focus where it is. To deselect a row costs little at any length of the list.
    void setSelected(int row, bool selected) const;

    /// Whether the native list will select a row for this message, as far as can be told before: of a letter it cannot.
    bool willSelect(UINT message, WPARAM wParam, LPARAM lParam) const;

private:
    bool isSelected(int row) const;
    bool keyWillSelect(WPARAM key) const;
    int rowAt(LPARAM point) const;
    void setState(int row, UINT state, UINT mask) const;

    HWND list_ = nullptr;
};

}  // namespace win32
