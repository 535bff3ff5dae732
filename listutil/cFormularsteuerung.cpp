#include "listutil/cFormularsteuerung.h"

#include "listutil/HeaderItem.h"

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

}  // namespace

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
