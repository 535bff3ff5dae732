#include "jet/space/PageAllocator.h"

#include <algorithm>
#include <vector>

#include "jet/Errors.h"

namespace jet {
namespace {

constexpr RowPointer kGlobalMap{kGlobalMapPage, 0};
/// Header, global map and the definitions of the system tables.
constexpr PageNumber kFixedPages = 6;

}  // namespace

PageAllocator::PageAllocator(PageStore& store) : store_(store), map_(store, kGlobalMap) {}

PageNumber PageAllocator::allocate() {
    const auto free = map_.next(lowestFree_);
    if (!free || *free >= store_.pageCount()) {
        lowestFree_ = store_.pageCount();
        return append();
    }
    requireUnused(*free);
    map_.put(*free, false);
    lowestFree_ = *free + 1;
    const std::span<std::uint8_t> page = store_.change(*free);
    std::fill(page.begin(), page.end(), std::uint8_t{0});
    return *free;
}

/// The first bytes of a page that this engine freed are zero. Any other free page still looks like what it was.
void PageAllocator::requireUnused(PageNumber page) {
    if (page >= kFixedPages) {
        if (store_.page(page).bytes.u8(0) == 0) return;
        if (!inUse_) inUse_.emplace(store_);
        if (!inUse_->contains(page)) return;
    }
    throw damaged(page, u"Die Seite wird benutzt und ist als frei verzeichnet");
}

PageNumber PageAllocator::append() {
    const PageNumber page = store_.append();
    markUsed(page);
    return page;
}

void PageAllocator::free(PageNumber page) {
    if (page < kFixedPages || page >= store_.pageCount() || map_.contains(page)) {
        throw damaged(page, u"Eine Seite, die frei wird, ist es schon oder darf es nicht werden");
    }
    base::putU32(store_.change(page), 0, 0);
    // Bitmap pages would make the file grow when a page is freed. So the page stays unused until the map has them
    // anyway.
    if (!map_.covers(page) && (map_.isReference() || !widenRow(page))) return;
    map_.put(page, true);
    lowestFree_ = std::min(lowestFree_, page);
}

void PageAllocator::markUsed(PageNumber page) {
    if (!map_.covers(page)) {
        if (map_.isReference())
            addBitmap(page / kBitmapPages);
        else if (!widenRow(page))
            turnIntoReferences(page);
    }
    map_.put(page, false);
}

/// Gives an inline row a bit for the page, at its beginning or its end. Pages in between count as used if the file has
/// them.
/// @return false if page 1 has no room for a row of this length
bool PageAllocator::widenRow(PageNumber page) {
    const base::Bytes row = map_.bytes();
    const PageNumber oldFirst = base::ByteView{row}.u32(kFirstPageOffset);
    const PageNumber first = std::min(oldFirst, page / 8 * 8);
    const std::uint64_t oldEnd = oldFirst + std::uint64_t{8} * (row.size() - kInlineBitsOffset);
    const std::uint64_t end = std::max<std::uint64_t>(oldEnd, std::uint64_t{page} + 1);
    const std::size_t needed = inlineRowBytes(end - first);
    if (oldFirst % 8 != 0 || needed > kPageSize) return false;
    std::vector<PageNumber> free;
    const std::size_t rowBytes = longerMapRow(row.size(), needed);
    for (std::uint64_t number = first; number < first + 8 * (rowBytes - kInlineBitsOffset); ++number) {
        const bool isOld = number >= oldFirst && number < oldEnd;
        const auto each = static_cast<PageNumber>(number);
        if (isOld ? map_.contains(each) : number >= store_.pageCount()) free.push_back(each);
    }
    return map_.replace(UsageMap::inlineRow(first, free, rowBytes));
}

/// @param page  must have a bit afterwards
void PageAllocator::turnIntoReferences(PageNumber page) {
    const std::vector<PageNumber> free = map_.pagesBefore(store_.pageCount());
    const std::size_t rowBytes = longerMapRow(kUsageMapRowBytes, mapEntryOffset(page / kBitmapPages + 1));
    if (!map_.replace(UsageMap::referenceRow({}, rowBytes))) {
        throw damaged(kGlobalMap.page, u"Die Seite hat keinen Platz für die Belegungskarte der Datei");
    }
    for (std::size_t entry = 0; entry <= page / kBitmapPages; ++entry) {
        if (map_.bitmapPage(entry) == 0) addBitmap(entry);
    }
    for (const PageNumber number : free)
        map_.put(number, true);
}

/// Existing pages of the file count as used.
void PageAllocator::addBitmap(std::size_t entry) {
    if (entry >= map_.entryCount()) throw damaged(kGlobalMap.page, u"Die Belegungskarte der Datei ist zu kurz");
    const PageNumber bitmap = store_.append();
    const std::span<std::uint8_t> page = store_.change(bitmap);
    clearBitmapPage(page, 0xFF);
    const auto first = static_cast<PageNumber>(entry * kBitmapPages);
    for (PageNumber number = first; number < store_.pageCount() && number - first < kBitmapPages; ++number)
        putBit(page.subspan(kBitmapBitsOffset), number - first, false);
    map_.setBitmapPage(entry, bitmap);
    // The bitmap page itself may be the first page that the next bitmap covers.
    if (bitmap / kBitmapPages != entry) markUsed(bitmap);
}

}  // namespace jet
