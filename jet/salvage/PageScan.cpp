#include "jet/salvage/PageScan.h"

#include "jet/page/UsageMap.h"
#include "jet/salvage/DamagedDataPage.h"

namespace jet {
namespace {

/// Adds the pages whose bits are set, from `first` on.
void addPages(std::span<const std::uint8_t> bits, std::uint64_t first, PageNumber pageCount,
              std::vector<PageNumber>& pages) {
    for (auto bit = nextBit(bits, 0); bit && first + *bit < pageCount; bit = nextBit(bits, *bit + 1))
        pages.push_back(static_cast<PageNumber>(first + *bit));
}

}  // namespace

std::optional<std::vector<PageNumber>> readDamagedMap(DamagedFile& file, RowPointer row) {
    if (row.isNone() || row.page >= file.pageCount()) return std::nullopt;
    const DamagedDataPage page = DamagedDataPage::read(file, row.page);
    if (page.page().kind() != PageKind::Data || row.slot >= page.slotCount()) return std::nullopt;
    const DamagedSlot slot = page.slot(row.slot);
    if (slot.state != SlotState::Live || slot.bytes.size() <= kInlineBitsOffset) return std::nullopt;
    const base::ByteView bytes{slot.bytes};
    std::vector<PageNumber> pages;
    if (bytes.u8(0) == kInlineMap) {
        addPages(slot.bytes.subspan(kInlineBitsOffset), bytes.u32(kFirstPageOffset), file.pageCount(), pages);
        return pages;
    }
    if (bytes.u8(0) != kReferenceMap) return std::nullopt;
    for (std::size_t entry = 0; entry < mapEntryCount(bytes.size()); ++entry) {
        const PageNumber number = bytes.u32(mapEntryOffset(entry));
        if (number == 0) continue;
        if (number >= file.pageCount()) return std::nullopt;
        const PageView bitmap = file.page(number);
        if (bitmap.kind() != PageKind::UsageBitmap) return std::nullopt;
        addPages(bitmap.bytes.from(kBitmapBitsOffset).bytes(), std::uint64_t{entry} * kBitmapPages, file.pageCount(),
                 pages);
    }
    return pages;
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
    const auto free = readDamagedMap(file, {kGlobalMapPage, 0});
    if (!free) return;
    isFree_.resize(pageCount());
    for (const PageNumber page : *free)
        isFree_[page] = true;
}

}  // namespace jet
