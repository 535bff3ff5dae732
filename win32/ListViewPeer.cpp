#include "win32/ListViewPeer.h"

#include <algorithm>
#include <cstdlib>
#include <oleacc.h>
#include <utility>

#include "forms/ImageList.h"
#include "win32/HeaderClicks.h"
#include "win32/HeaderIcons.h"
#include "win32/SystemHeaders.h"
#include "win32/TextMeasure.h"
#include "win32/WideText.h"

namespace win32 {

namespace {

bool looksAlike(COLORREF a, COLORREF b) {
    constexpr int kVisibleDifference = 12;
    const auto isNear = [](BYTE x, BYTE y) { return std::abs(x - y) < kVisibleDifference; };
    return isNear(GetRValue(a), GetRValue(b)) && isNear(GetGValue(a), GetGValue(b)) &&
           isNear(GetBValue(a), GetBValue(b));
}

constexpr int kHimetricPerInch = 2540;

// In units of the layout: what the system adds to the width of a cell's and of a header's text.
constexpr int kCellPadding = 14;
constexpr int kHeaderPadding = 18;
constexpr int kIconSize = 16;
constexpr int kIconMargin = 12;

/// Messages carry column widths as 16-bit numbers.
constexpr int kWidestColumn = 0x7FFF;

/// Sets a flag while it lives.
class During {
public:
    explicit During(bool& flag) : flag_(flag), former_(std::exchange(flag, true)) {}
    During(const During&) = delete;
    During& operator=(const During&) = delete;
    ~During() { flag_ = former_; }

private:
    bool& flag_;
    bool former_;
};

DWORD styleOf(forms::ListView::ViewMode view) {
    switch (view) {
        case forms::ListView::ViewMode::Icon:
            return LVS_ICON;
        case forms::ListView::ViewMode::SmallIcon:
            return LVS_SMALLICON;
        case forms::ListView::ViewMode::List:
            return LVS_LIST;
        case forms::ListView::ViewMode::Report:
            break;
    }
    return LVS_REPORT;
}

int formatOf(forms::ColumnHeader::Alignment alignment) {
    switch (alignment) {
        case forms::ColumnHeader::Alignment::Right:
            return LVCFMT_RIGHT;
        case forms::ColumnHeader::Alignment::Center:
            return LVCFMT_CENTER;
        case forms::ColumnHeader::Alignment::Left:
            break;
    }
    return LVCFMT_LEFT;
}

/// Messages by which the user may move the selection; the last one comes from assistive programs acting for the user.
bool isInput(UINT message) {
    return message == WM_KEYDOWN || message == WM_CHAR || message == WM_LBUTTONDOWN || message == WM_LBUTTONUP ||
           message == WM_LBUTTONDBLCLK || message == WM_RBUTTONDOWN || message == WM_RBUTTONUP ||
           message == LVM_SETITEMSTATE;
}

/// Whether after this message more or fewer rows may fit. A scroll bar that appears or disappears during a change does
/// not count.
bool isBeforeChangeOfRoom(UINT message, LPARAM lParam) {
    if (message == WM_SETFONT) return true;
    return message == WM_WINDOWPOSCHANGING && (reinterpret_cast<const WINDOWPOS*>(lParam)->flags & SWP_NOSIZE) == 0;
}

}  // namespace

ListViewPeer::ListViewPeer(forms::ListView& list, const Surroundings& surroundings)
    : PeerOn(list, surroundings), list_(list) {
    make(WC_LISTVIEWW, {}, WS_TABSTOP | LVS_SINGLESEL | LVS_SHOWSELALWAYS | LVS_OWNERDATA | styleOf(list.View()),
         WS_EX_CLIENTEDGE);
    selection_.attach(window());
    const DWORD extended = LVS_EX_FULLROWSELECT | LVS_EX_DOUBLEBUFFER | LVS_EX_LABELTIP;
    send(LVM_SETEXTENDEDLISTVIEWSTYLE, extended, extended);
    setSpokenName();
    takeDoubleClicksAsClicks(reinterpret_cast<HWND>(send(LVM_GETHEADER)));
    showColumns();
    showHeaderIcons();
    show(forms::Property::Rows);
}

void ListViewPeer::setSpokenName() const {
    if (spokenName() == nullptr) return;
    SetWindowTextW(window(), spokenName());
    // If the accessibility library is available, it is told the name directly.
    IAccPropServices* services = nullptr;
    if (FAILED(CoCreateInstance(CLSID_AccPropServices, nullptr, CLSCTX_INPROC_SERVER, IID_IAccPropServices,
                                reinterpret_cast<void**>(&services)))) {
        return;
    }
    services->SetHwndPropStr(window(), static_cast<DWORD>(OBJID_CLIENT), CHILDID_SELF, PROPID_ACC_NAME, spokenName());
    services->Release();
}

void ListViewPeer::showColumns() {
    widthCodes_.assign(static_cast<std::size_t>(list_.columnCount()), 0);
    shownScale_ = fonts().scale();
    while (send(LVM_DELETECOLUMN, 0) != FALSE) {
    }
    for (int index = 1; index <= list_.columnCount(); ++index) {
        const forms::ColumnHeader& header = list_.ColumnHeaders(index);
        std::wstring text = toWide(header.Text());
        LVCOLUMNW column{};
        column.mask = LVCF_TEXT | LVCF_WIDTH | LVCF_FMT | LVCF_SUBITEM;
        column.pszText = text.data();
        column.fmt = formatOf(header.alignment());
        column.cx = MulDiv(header.widthHimetric(), static_cast<int>(fonts().scale()), kHimetricPerInch);
        column.iSubItem = index - 1;
        send(LVM_INSERTCOLUMNW, static_cast<WPARAM>(index - 1), reinterpret_cast<LPARAM>(&column));
    }
}

void ListViewPeer::show(forms::Property property) {
    switch (property) {
        case forms::Property::Rows:
            // This is called a million times in a refill, so the rows are read only when the list is next used or
            // painted.
            if (!outOfDate_) repaint();
            outOfDate_ = true;
            break;
        case forms::Property::Columns:
            showColumns();
            break;
        case forms::Property::Selection:
            // Otherwise catching up shows it, too. Doing it now, during a refill, would make the scroll bar disappear
            // and come back.
            if (!outOfDate_) showSelection();
            break;
        case forms::Property::HeaderIcons:
            showHeaderIcons();
            break;
        case forms::Property::Enabled:
            showEnabled();
            break;
        default:
            break;
    }
}

void ListViewPeer::catchUp() {
    if (!outOfDate_) return;
    outOfDate_ = false;
    {
        const During guard(fromCode_);
        send(LVM_SETITEMCOUNT, static_cast<WPARAM>(list_.rowCount()), LVSICF_NOSCROLL);
    }
    showSelection();
}

int ListViewPeer::modelRow() const {
    const std::optional<std::size_t> place = list_.selectedPlace();
    return place ? static_cast<int>(*place) : -1;
}

void ListViewPeer::showSelection() {
    const During guard(fromCode_);
    selection_.show(modelRow());
}

void ListViewPeer::ensureVisible(std::size_t rowIndex) {
    send(LVM_ENSUREVISIBLE, rowIndex, FALSE);
}

bool ListViewPeer::isSelectedRowInSight() const {
    const int row = selectedRow();
    RECT place{};
    place.left = LVIR_BOUNDS;
    RECT client{};
    GetClientRect(window(), &client);
    return row >= 0 && row >= send(LVM_GETTOPINDEX) &&
           send(LVM_GETITEMRECT, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&place)) != FALSE &&
           place.top < client.bottom;
}

void ListViewPeer::showHeaderIcons() {
    const forms::ImageList* icons = list_.ColumnHeaderIcons();
    IconList drawn = icons != nullptr ? drawHeaderIcons(icons->pictures(), fonts().scaled(kIconSize)) : IconList();
    const auto header = reinterpret_cast<HWND>(send(LVM_GETHEADER));
    SendMessageW(header, HDM_SETIMAGELIST, HDSIL_NORMAL, reinterpret_cast<LPARAM>(drawn.get()));
    headerIcons_ = std::move(drawn);
}

void ListViewPeer::useFonts() {
    PeerOn::useFonts();
    showHeaderIcons();
    adaptColumnWidths();
}

void ListViewPeer::systemChanged() {
    showHeaderIcons();
    PeerOn::systemChanged();
}

LRESULT ListViewPeer::message(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message != WM_ERASEBKGND && message != WM_DESTROY) catchUp();
    if (message == LVM_SETCOLUMNWIDTH && setColumnWidth(static_cast<int>(wParam), static_cast<short>(LOWORD(lParam)))) {
        return TRUE;
    }
    if (handleClick(message, lParam)) return 0;
    if (isInput(message) && !fromCode_) return userInput(message, wParam, lParam);
    if (isBeforeChangeOfRoom(message, lParam)) wasInSight_ = isSelectedRowInSight();
    const LRESULT result = PeerOn::message(message, wParam, lParam);
    if (message == WM_SIZE) fillWithLastColumn();
    const bool changedRoom = message == WM_SIZE || message == WM_SETFONT;
    if (changedRoom && wasInSight_) ensureVisible(static_cast<std::size_t>(selectedRow()));
    if (message == WM_NOTIFY) headerNotified(*reinterpret_cast<const NMHDR*>(lParam));
    return result;
}

void ListViewPeer::headerNotified(const NMHDR& header) {
    if (header.code != HDN_ENDTRACKW && header.code != HDN_ENDTRACKA) return;
    keepWidth(reinterpret_cast<const NMHEADERW&>(header).iItem);
}

/// A width in pixels is kept, whether the user or code has set it.
void ListViewPeer::keepWidth(int column) {
    if (column < 0 || column >= list_.columnCount()) return;
    widthCodes_[static_cast<std::size_t>(column)] = 0;
    if (column == list_.columnCount() - 1) lastFitting_.reset();
}

/// @return true if the click must have no further effect
bool ListViewPeer::handleClick(UINT message, LPARAM lParam) {
    if (message != WM_LBUTTONDOWN && message != WM_LBUTTONDBLCLK && message != WM_RBUTTONDOWN) return false;
    LVHITTESTINFO hit{};
    hit.pt = {static_cast<short>(LOWORD(lParam)), static_cast<short>(HIWORD(lParam))};
    selectedBeforeClick_ = selectedRow();
    if (send(LVM_SUBITEMHITTEST, 0, reinterpret_cast<LPARAM>(&hit)) >= 0) return false;
    SetFocus(window());
    return true;
}

LRESULT ListViewPeer::userInput(UINT message, WPARAM wParam, LPARAM lParam) {
    deselected_ = false;
    if (selection_.willSelect(message, wParam, lParam)) deselectForMove();
    typing_ = message == WM_CHAR;
    const LRESULT result = PeerOn::message(message, wParam, lParam);
    typing_ = false;
    keepSelection();
    return result;
}

void ListViewPeer::deselectForMove() {
    const int selected = selectedRow();
    if (selected < 0) return;
    const During guard(fromCode_);
    selection_.setSelected(selected, false);
    deselected_ = true;
}

void ListViewPeer::keepSelection() {
    if (selectedRow() >= 0 || !list_.selectedPlace()) return;
    if (!deselected_) return list_.userEmptiedSelection();
    // The selection did not move after all; perhaps only the focus did.
    const During guard(fromCode_);
    selection_.setSelected(modelRow(), true);
}

LRESULT ListViewPeer::notify(NMHDR& header) {
    switch (header.code) {
        case LVN_GETDISPINFOW:
            return giveCell(reinterpret_cast<NMLVDISPINFOW&>(header));
        case LVN_ODFINDITEMW:
            return findRow(reinterpret_cast<const NMLVFINDITEMW&>(header));
        case LVN_ITEMCHANGED:
            rowChanged(reinterpret_cast<const NMLISTVIEW&>(header));
            return 0;
        case NM_CUSTOMDRAW:
            return markSelection(reinterpret_cast<NMLVCUSTOMDRAW&>(header));
        case NM_CLICK:
            clicked(reinterpret_cast<const NMITEMACTIVATE&>(header));
            return 0;
        case LVN_COLUMNCLICK:
            list_.userClickedColumn(reinterpret_cast<const NMLISTVIEW&>(header).iSubItem + 1);
            return 0;
        default:
            return 0;
    }
}

/// Without the focus, the system marks the selected row with the colour of buttons. In a contrast theme that may be the
/// background of all rows, in others nearly so.
LRESULT ListViewPeer::markSelection(NMLVCUSTOMDRAW& draw) const {
    const bool isHidden = GetFocus() != window() && looksAlike(GetSysColor(COLOR_BTNFACE), GetSysColor(COLOR_WINDOW));
    if (draw.nmcd.dwDrawStage == CDDS_PREPAINT) return isHidden ? CDRF_NOTIFYITEMDRAW : CDRF_DODEFAULT;
    if (draw.nmcd.dwDrawStage == CDDS_ITEMPREPAINT && static_cast<int>(draw.nmcd.dwItemSpec) == selectedRow()) {
        draw.nmcd.uItemState &= ~static_cast<UINT>(CDIS_SELECTED);
        draw.clrText = GetSysColor(COLOR_HIGHLIGHTTEXT);
        draw.clrTextBk = GetSysColor(COLOR_HIGHLIGHT);
    }
    return CDRF_DODEFAULT;
}

LRESULT ListViewPeer::giveCell(NMLVDISPINFOW& info) {
    LVITEMW& item = info.item;
    if ((item.mask & LVIF_TEXT) == 0 || item.cchTextMax <= 0) return 0;
    base::TextView text;
    // A list that has not caught up yet may ask for a row that no longer exists.
    if (item.iItem >= 0 && item.iItem < list_.rowCount()) {
        text = list_.cellAt(static_cast<std::size_t>(item.iItem), item.iSubItem);
    }
    const base::TextView shown = text.substr(0, static_cast<std::size_t>(item.cchTextMax) - 1);
    *std::copy(shown.begin(), shown.end(), item.pszText) = L'\0';
    return 0;
}

LRESULT ListViewPeer::findRow(const NMLVFINDITEMW& search) {
    const LVFINDINFOW& wanted = search.lvfi;
    if ((wanted.flags & (LVFI_STRING | LVFI_PARTIAL)) == 0 || list_.rowCount() == 0) return -1;
    const int start = std::clamp(search.iStart, 0, list_.rowCount() - 1);
    const auto found =
        list_.findPrefix(static_cast<std::size_t>(start), fromWide(wanted.psz), (wanted.flags & LVFI_WRAP) != 0);
    if (found && typing_) deselectForMove();
    return found ? static_cast<LRESULT>(*found) : -1;
}

void ListViewPeer::rowChanged(const NMLISTVIEW& change) {
    const bool becameSelected = (change.uNewState & LVIS_SELECTED) != 0 && (change.uOldState & LVIS_SELECTED) == 0;
    if (fromCode_ || change.iItem < 0 || !becameSelected) return;
    list_.userSelectedRow(static_cast<std::size_t>(change.iItem));
}

void ListViewPeer::clicked(const NMITEMACTIVATE& click) {
    if (click.iItem >= 0 && click.iItem == std::exchange(selectedBeforeClick_, -1)) list_.userClickedSelectedRow();
}

/// Carries out the two width codes. @return false for a width in pixels
bool ListViewPeer::setColumnWidth(int column, int code) {
    if (code != LVSCW_AUTOSIZE && code != LVSCW_AUTOSIZE_USEHEADER) {
        keepWidth(column);
        return false;
    }
    if (column < 0 || column >= list_.columnCount()) return false;
    widthCodes_[static_cast<std::size_t>(column)] = code;
    int width = fittingWidth(column, code == LVSCW_AUTOSIZE_USEHEADER);
    if (column == list_.columnCount() - 1) {
        lastFitting_ = code == LVSCW_AUTOSIZE_USEHEADER ? std::optional(width) : std::nullopt;
        if (lastFitting_) width = std::max(width, widthLeftFor(column));
    }
    PeerOn::message(LVM_SETCOLUMNWIDTH, static_cast<WPARAM>(column), MAKELPARAM(width, 0));
    return true;
}

/// After a change of the font: columns with a width code are fitted again, others keep their size on the screen.
void ListViewPeer::adaptColumnWidths() {
    const auto formerScale = static_cast<int>(std::exchange(shownScale_, fonts().scale()));
    for (int column = 0; column < list_.columnCount(); ++column) {
        if (setColumnWidth(column, widthCodes_[static_cast<std::size_t>(column)])) continue;
        const auto width = static_cast<int>(send(LVM_GETCOLUMNWIDTH, static_cast<WPARAM>(column)));
        PeerOn::message(LVM_SETCOLUMNWIDTH, static_cast<WPARAM>(column),
                        MAKELPARAM(MulDiv(width, static_cast<int>(fonts().scale()), formerScale), 0));
    }
}

/// Width in pixels of the widest value, and of the header including its mark if wanted.
int ListViewPeer::fittingWidth(int column, bool withHeader) {
    const WindowDc dc(window(), fonts().normal());
    TextMeasure values(dc.get());
    list_.visitCells(column, [&values](base::TextView text) { values.add(text); });
    const int valueWidth = std::min(kWidestColumn, values.widest() + fonts().scaled(kCellPadding));
    if (!withHeader) return valueWidth;
    TextMeasure header(dc.get());
    header.add(list_.ColumnHeaders(column + 1).Text());
    return std::max(valueWidth, header.widest() + fonts().scaled(kHeaderPadding + kIconSize + kIconMargin));
}

int ListViewPeer::widthLeftFor(int column) const {
    RECT client{};
    GetClientRect(window(), &client);
    int width = client.right;
    for (int other = 0; other < list_.columnCount(); ++other) {
        if (other != column) width -= static_cast<int>(send(LVM_GETCOLUMNWIDTH, static_cast<WPARAM>(other)));
    }
    return width;
}

void ListViewPeer::fillWithLastColumn() {
    if (!lastFitting_) return;
    const int column = list_.columnCount() - 1;
    const int width = std::max(*lastFitting_, widthLeftFor(column));
    PeerOn::message(LVM_SETCOLUMNWIDTH, static_cast<WPARAM>(column), MAKELPARAM(width, 0));
}

}  // namespace win32
