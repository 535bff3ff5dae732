#include "win32/ListSelection.h"

#include <initializer_list>

namespace win32 {

namespace {

constexpr auto kFromStart = static_cast<WPARAM>(-1);

}  // namespace

bool ListSelection::isSelected(int row) const {
    return row >= 0 && SendMessageW(list_, LVM_GETITEMSTATE, static_cast<WPARAM>(row), LVIS_SELECTED) != 0;
}

int ListSelection::row(int expected) const {
    if (isSelected(expected)) return expected;
    if (SendMessageW(list_, LVM_GETSELECTEDCOUNT, 0, 0) == 0) return -1;
    const int focused = focusedRow();
    if (isSelected(focused)) return focused;
    return static_cast<int>(SendMessageW(list_, LVM_GETNEXTITEM, kFromStart, LVNI_SELECTED));
}

int ListSelection::focusedRow() const {
    return static_cast<int>(SendMessageW(list_, LVM_GETNEXTITEM, kFromStart, LVNI_FOCUSED));
}

void ListSelection::show(int row) const {
    const int selected = this->row(row);
    const int focused = focusedRow();
    if (row == selected && row == focused) return;
    for (const int former : {selected, focused}) {
        if (former >= 0 && former != row) setState(former, 0, LVIS_SELECTED | LVIS_FOCUSED);
    }
    if (row < 0) return;
    setState(row, LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
    SendMessageW(list_, LVM_SETSELECTIONMARK, 0, row);
}

void ListSelection::setSelected(int row, bool selected) const {
    setState(row, selected ? LVIS_SELECTED : 0U, LVIS_SELECTED);
}

void ListSelection::setState(int row, UINT state, UINT mask) const {
    LVITEMW item{};
    item.stateMask = mask;
    item.state = state;
    SendMessageW(list_, LVM_SETITEMSTATE, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
}

int ListSelection::rowAt(LPARAM point) const {
    LVHITTESTINFO hit{};
    hit.pt = {static_cast<short>(LOWORD(point)), static_cast<short>(HIWORD(point))};
    return static_cast<int>(SendMessageW(list_, LVM_SUBITEMHITTEST, 0, reinterpret_cast<LPARAM>(&hit)));
}

bool ListSelection::willSelect(UINT message, WPARAM wParam, LPARAM lParam) const {
    switch (message) {
        case WM_KEYDOWN:
            return keyWillSelect(wParam);
        case WM_LBUTTONDOWN:
        case WM_LBUTTONDBLCLK:
        case WM_RBUTTONDOWN:
            return rowAt(lParam) >= 0;
        case LVM_SETITEMSTATE: {
            const auto& item = *reinterpret_cast<const LVITEMW*>(lParam);
            return (item.state & item.stateMask & LVIS_SELECTED) != 0;
        }
        default:
            return false;
    }
}

bool ListSelection::keyWillSelect(WPARAM key) const {
    switch (key) {
        case VK_UP:
        case VK_PRIOR:
        case VK_HOME:
            return focusedRow() > 0;
        case VK_DOWN:
        case VK_NEXT:
        case VK_END:
            return focusedRow() + 1 < static_cast<int>(SendMessageW(list_, LVM_GETITEMCOUNT, 0, 0));
        default:
            return key == VK_SPACE;
    }
}

}  // namespace win32
