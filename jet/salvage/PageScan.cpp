#include "jet/salvage/PageScan.h"

#include "jet/page/UsageMap.h"
#include "jet/salvage/DamagedDataPage.h"

namespace jet {
namespace {

/// Adds the pages whose bits are set, from `first` on.
void addPages(std::span<const std::uint8_t> bits, std::uint64_t first, PageNumber pageCount, DamagedMap& map) {
    for (auto bit = nextBit(bits, 0); bit; bit = nextBit(bits, *bit + 1)) {
        if (first + *bit >= pageCount) return void(map.goesBeyondFile = true);
        map.pages->push_back(static_cast<PageNumber>(first + *bit));
    }
}

/// @param bytes  of a map whose bits are on pages of their own
void addBitmapPages(DamagedFile& file, base::ByteView bytes, DamagedMap& map) {
    for (std::size_t entry = 0; entry < mapEntryCount(bytes.size()); ++entry) {
        const PageNumber number = bytes.u32(mapEntryOffset(entry));
        if (number == 0) continue;
        map.goesBeyondFile = map.goesBeyondFile || number >= file.pageCount();
        if (number >= file.pageCount() || file.page(number).kind() != PageKind::UsageBitmap) return map.pages.reset();
        addPages(file.page(number).bytes.from(kBitmapBitsOffset).bytes(), std::uint64_t{entry} * kBitmapPages,
                 file.pageCount(), map);
    }
}

}  // namespace

DamagedMap readDamagedMap(DamagedFile& file, RowPointer row) {
    DamagedMap map{.pages = {}, .goesBeyondFile = !row.isNone() && row.page >= file.pageCount()};
    if (row.isNone() || map.goesBeyondFile) return map;
    const DamagedDataPage page = DamagedDataPage::read(file, row.page);
    if (page.page().kind() != PageKind::Data || row.slot >= page.slotCount()) return map;
    const DamagedSlot slot = page.slot(row.slot);
    if (slot.state != SlotState::Live || slot.bytes.size() <= kInlineBitsOffset) return map;
    const base::ByteView bytes{slot.bytes};
    const std::uint8_t kind = bytes.u8(0);
    if (kind == kInlineMap || kind == kReferenceMap) map.pages.emplace();
    if (kind == kInlineMap)
        addPages(slot.bytes.subspan(kInlineBitsOffset), bytes.u32(kFirstPageOffset), file.pageCount(), map);
    if (kind == kReferenceMap) addBitmapPages(file, bytes, map);
    return map;
}

PageScan::PageScan(DamagedFile& file) {
    kinds_.reserve(file.pageCount());
    owners_.reserve(file.pageCount());
    for (PageNumber number = 0; number < file.pageCount(); ++number) {
        const PageView page = file.page(number);
        kinds_.push_back(page.kind());
        owners_.push_back(page.bytes.u32(kOwnerOffset));
    }
    readFreePages(file);
}

void PageScan::readFreePages(DamagedFile& file) {
    const auto free = readDamagedMap(file, {kGlobalMapPage, 0}).pages;
    if (!free) return;
    isFree_.resize(pageCount());
    for (const PageNumber page : *free)
        isFree_[page] = true;
}

}  // namespace jet
