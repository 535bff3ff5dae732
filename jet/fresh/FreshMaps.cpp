#include "jet/fresh/FreshMaps.h"

#include <algorithm>
#include <cassert>
#include <numeric>

#include "jet/page/DataPage.h"
#include "jet/page/UsageMap.h"

namespace jet {
namespace {

constexpr PageNumber kInlinePages = 8 * (kUsageMapRowBytes - kInlineBitsOffset);
constexpr std::size_t kRowsPerPage = (kPageSize - kDataPageHeaderBytes) / (kUsageMapRowBytes + kSlotBytes);
/// The longest row that fits on page 1 beside the second global map.
constexpr std::size_t kLongestGlobalRow = 4009;

base::Bytes emptyBitmap() {
    base::Bytes page(kPageSize);
    clearBitmapPage(page, 0);
    return page;
}

void setBit(base::Bytes& bitmap, PageNumber bit) {
    putBit(std::span(bitmap).subspan(kBitmapBitsOffset), bit);
}

std::vector<PageNumber> pagesFrom(PageNumber first, PageNumber end) {
    std::vector<PageNumber> pages(end - first);
    std::iota(pages.begin(), pages.end(), first);
    return pages;
}

base::Bytes globalReferenceRow(FreshPages& pages) {
    std::vector<PageNumber> bitmaps;
    while (bitmaps.size() * kBitmapPages < pages.count())
        bitmaps.push_back(pages.allocate());
    for (std::size_t i = 0; i < bitmaps.size(); ++i) {
        base::Bytes bitmap = emptyBitmap();
        const auto first = static_cast<PageNumber>(i * kBitmapPages);
        for (PageNumber bit = std::max(pages.count(), first) - first; bit < kBitmapPages; ++bit)
            setBit(bitmap, bit);
        pages.write(bitmaps[i], bitmap);
    }
    return UsageMap::referenceRow(bitmaps);
}

}  // namespace

RowPointer FreshMaps::reserve() {
    if (free_ == 0) {
        mapPages_.push_back({pages_.allocate(), {}});
        free_ = kRowsPerPage;
    }
    --free_;
    MapPage& page = mapPages_.back();
    page.rows.push_back(UsageMap::inlineRow(0, {}));
    return {page.number, static_cast<std::uint8_t>(page.rows.size() - 1)};
}

void FreshMaps::set(RowPointer map, std::span<const PageNumber> pages) {
    const auto found =
        std::find_if(mapPages_.begin(), mapPages_.end(), [&](const MapPage& page) { return page.number == map.page; });
    assert(found != mapPages_.end());
    found->rows[map.slot] = rowFor(pages);
}

base::Bytes FreshMaps::rowFor(std::span<const PageNumber> pages) {
    if (pages.empty() || pages.back() < kInlinePages) return UsageMap::inlineRow(0, pages);
    const PageNumber first = pages.front() / 8 * 8;
    if (pages.back() - first < kInlinePages) return UsageMap::inlineRow(first, pages);
    std::vector<PageNumber> bitmaps(pages.back() / kBitmapPages + 1);
    for (std::size_t at = 0; at < pages.size();) {
        const PageNumber piece = pages[at] / kBitmapPages;
        base::Bytes bitmap = emptyBitmap();
        for (; at < pages.size() && pages[at] / kBitmapPages == piece; ++at)
            setBit(bitmap, pages[at] % kBitmapPages);
        bitmaps[piece] = pages_.allocate();
        pages_.write(bitmaps[piece], bitmap);
    }
    return UsageMap::referenceRow(bitmaps);
}

void FreshMaps::finish() {
    for (const MapPage& mapPage : mapPages_) {
        base::Bytes page(kPageSize);
        clearDataPage(page, 0);
        for (const base::Bytes& row : mapPage.rows)
            appendRow(page, row);
        pages_.write(mapPage.number, page);
    }
}

void writeGlobalMap(FreshPages& pages) {
    const std::size_t rowBytes = longerMapRow(kUsageMapRowBytes, inlineRowBytes(pages.count()));
    base::Bytes map;
    if (rowBytes <= kLongestGlobalRow) {
        const auto covered = static_cast<PageNumber>((rowBytes - kInlineBitsOffset) * 8);
        map = UsageMap::inlineRow(0, pagesFrom(pages.count(), covered), rowBytes);
    } else {
        map = globalReferenceRow(pages);
    }
    base::Bytes page(kPageSize);
    clearDataPage(page, kGlobalMapPage);
    appendRow(page, map);
    appendRow(page, UsageMap::inlineRow(0, {}));
    pages.write(kGlobalMapPage, page);
}

}  // namespace jet
