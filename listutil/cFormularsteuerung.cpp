#include "listutil/cFormularsteuerung.h"

#include <functional>
#include <vector>

#include "app/mPublic.h"
#include "base/RuntimeError.h"
#include "listutil/HeaderItem.h"
#include "listutil/SortRestoreEntry.h"

namespace tolv {
namespace {

constexpr std::uint32_t LVM_SETCOLUMNWIDTH = 0x101E;
constexpr std::uint32_t LVM_GETHEADER = 0x101F;
constexpr std::uint32_t HDM_SETITEMA = 0x1204;

constexpr std::uint32_t HDI_FORMAT = 0x4;
constexpr std::uint32_t HDI_IMAGE = 0x20;
constexpr std::int32_t HDF_RIGHT = 0x1;
constexpr std::int32_t HDF_CENTER = 0x2;
constexpr std::int32_t HDF_IMAGE = 0x800;
constexpr std::int32_t HDF_BITMAP_ON_RIGHT = 0x1000;
constexpr std::int32_t HDF_STRING = 0x4000;

// Column types, as the headers' tags name them.
constexpr base::TextView kDate = u"DATE";
constexpr base::TextView kNumber = u"NUMBER";
constexpr base::TextView kFromTo = u"VONBIS";

constexpr std::size_t kShownDateLength = 10;    // dd.mm.yyyy
constexpr std::size_t kSortableDateLength = 8;  // yyyymmdd

/// @param column  from 1
base::TextView valueOf(const forms::ListItem& item, int column) {
    return column == 1 ? item.Text() : item.SubItems(column - 1);
}

void setValue(forms::ListItem item, int column, base::TextView value) {
    if (column == 1) {
        item.setText(value);
    } else {
        item.setSubItems(column - 1, value);
    }
}

/// Replaces every value of the column, row by row in the list's order.
void rewrite(forms::ListView& listView, int column, const std::function<base::Text(base::TextView)>& rewritten) {
    const int rowCount = listView.rowCount();
    for (int index = 1; index <= rowCount; ++index) {
        const forms::ListItem item = listView.ListItems(index);
        setValue(item, column, rewritten(valueOf(item, column)));
    }
}

base::Text shownDate(base::TextView value) {
    if (value.size() != kSortableDateLength) return base::Text(value);
    return base::Text(value.substr(6)).append(u".").append(value.substr(4, 2)).append(u".").append(value.substr(0, 4));
}

/// Puts back the texts that were saved before the sort.
void restore(forms::ListView& listView, int column, const std::vector<SortRestoreEntry>& entries) {
    if (listView.rowCount() == 0) return;
    if (entries.empty()) throw base::runtimeError(base::RuntimeErrorNumber::SubscriptOutOfRange);
    for (const SortRestoreEntry& entry : entries)
        setValue(listView.ListItems(entry.Key), column, entry.Text);
}

}  // namespace

void cFormularsteuerung::Sort_ListView(const forms::ColumnHeader& header, forms::ListView& listView) {
    const int column = header.Index();
    if (header.Tag() == kDate) {
        rewrite(listView, column, [this](base::TextView value) {
            const auto date = value.size() == kShownDateLength ? regional_.toSortableDate(value) : std::nullopt;
            return date ? *date : base::Text(value);
        });
    }
    listView.setSortKey(static_cast<std::int16_t>(column - 1));
    listView.setSortOrder(listView.SortOrder() == forms::ListView::Order::Ascending
                              ? forms::ListView::Order::Descending
                              : forms::ListView::Order::Ascending);
    objForm->SetHeaderIcon(listView);
    listView.setSorted(true);
    if (header.Tag() == kDate) rewrite(listView, column, shownDate);
    if (header.Tag() == kNumber) {
        rewrite(listView, column, [this](base::TextView value) { return base::decimal(regional_.toLong(value)); });
    }
    // Ranges have no sortable form yet: nothing was saved for them.
    if (header.Tag() == kFromTo) restore(listView, column, {});
}

void cFormularsteuerung::SetHeaderIcon(const forms::ListView& listView) {
    const std::int32_t sortColumn = listView.SortKey() + 1;
    for (int index = 1; index <= listView.columnCount(); ++index) {
        const std::int32_t alignmentFlags = GetHeaderAlignment(listView.ColumnHeaders(index));
        if (index == sortColumn) {
            SetHeaderItemIcon(index, static_cast<std::int32_t>(listView.SortOrder()), true, listView, alignmentFlags);
        } else {
            SetHeaderItemIcon(index, 0, false, listView, alignmentFlags);
        }
    }
}

void cFormularsteuerung::SetColWidth(const forms::ListView& listView, std::int32_t widthCode) {
    const int columnCount = listView.columnCount();
    for (int index = 1; index <= columnCount; ++index)
        SetSingleColWidth(listView, index, widthCode);
}

std::int32_t cFormularsteuerung::GetHeaderAlignment(const forms::ColumnHeader& header) {
    switch (header.alignment()) {
        case forms::ColumnHeader::Alignment::Right:
            return HDF_RIGHT;
        case forms::ColumnHeader::Alignment::Center:
            return HDF_CENTER;
        case forms::ColumnHeader::Alignment::Left:
            break;
    }
    return 0;
}

void cFormularsteuerung::SetHeaderItemIcon(std::int32_t columnIndex, std::int32_t imageIndex, bool showImage,
                                           const forms::ListView& listView, std::int32_t alignmentFlags) {
    const std::intptr_t header = windowMessages_.send(listView.hWnd(), LVM_GETHEADER, 0, 0);
    HeaderItem item;
    item.mask = HDI_FORMAT | HDI_IMAGE;
    item.format = HDF_STRING;
    if (showImage) {
        item.format |= HDF_BITMAP_ON_RIGHT | HDF_IMAGE;
        item.imageIndex = imageIndex;
    }
    item.format |= alignmentFlags;
    windowMessages_.send(static_cast<platform::WindowHandle>(header), HDM_SETITEMA,
                         static_cast<std::uintptr_t>(columnIndex - 1), reinterpret_cast<std::intptr_t>(&item));
}

void cFormularsteuerung::SetSingleColWidth(const forms::ListView& listView, std::int32_t columnIndex,
                                           std::int32_t widthCode) {
    if (listView.View() != forms::ListView::ViewMode::Report) return;
    if (columnIndex < 1 || columnIndex > listView.columnCount()) return;
    windowMessages_.send(listView.hWnd(), LVM_SETCOLUMNWIDTH, static_cast<std::uintptr_t>(columnIndex - 1), widthCode);
}

}  // namespace tolv
