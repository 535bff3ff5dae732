#include "jet/PageAllocator.h"

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

/// A page that this engine has freed shows it by its first bytes; any other one still looks like what it was.
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
    // A page of which the map says nothing stays as it is: unused, but not free.
    if (!map_.covers(page)) return;
    map_.put(page, true);
    lowestFree_ = std::min(lowestFree_, page);
}

void PageAllocator::markUsed(PageNumber page) {
    if (!map_.covers(page)) {
        if (map_.isReference())
            addBitmap(page / kBitmapPages);
        else if (!enlargeRow(page))
            turnIntoReferences(page);
    }
    map_.put(page, false);
}

/// @return false if page 1 has no room for so long a row, or the map begins behind the page
bool PageAllocator::enlargeRow(PageNumber page) {
    base::Bytes row = map_.bytes();
    const PageNumber first = base::ByteView{row}.u32(1);
    if (page < first) return false;
    const std::size_t oldEnd = row.size();
    const std::size_t needed = kInlineBitsOffset + (page - first) / 8 + 1;
    if (needed > kPageSize) return false;
    row.resize(longerMapRow(oldEnd, needed), 0xFF);
    for (std::size_t i = oldEnd; i < row.size(); ++i) {
        for (unsigned bit = 0; bit < 8; ++bit) {
            const std::uint64_t number = std::uint64_t{first} + 8 * (i - kInlineBitsOffset) + bit;
            if (number < store_.pageCount()) row[i] = static_cast<std::uint8_t>(row[i] & ~(1U << bit));
        }
    }
    return map_.replace(row);
}

/// @param page  for which there must be a bit afterwards
void PageAllocator::turnIntoReferences(PageNumber page) {
    std::vector<PageNumber> free;
    for (auto next = map_.next(0); next && *next < store_.pageCount(); next = map_.next(*next + 1))
        free.push_back(*next);
    const std::size_t rowBytes = longerMapRow(kUsageMapRowBytes, 1 + 4 * (std::size_t{page} / kBitmapPages + 1));
    if (!map_.replace(UsageMap::referenceRow({}, rowBytes))) {
        throw damaged(kGlobalMap.page, u"Die Seite hat keinen Platz für die Belegungskarte der Datei");
    }
    for (std::size_t entry = 0; entry <= page / kBitmapPages; ++entry) {
        if (map_.bitmapPage(entry) == 0) addBitmap(entry);
    }
    for (const PageNumber number : free)
        map_.put(number, true);
}

/// The pages that the file has count as used.
void PageAllocator::addBitmap(std::size_t entry) {
    if (entry >= map_.entryCount()) throw damaged(kGlobalMap.page, u"Die Belegungskarte der Datei ist zu kurz");
    const PageNumber bitmap = store_.append();
    const std::span<std::uint8_t> page = store_.change(bitmap);
    clearBitmapPage(page, 0xFF);
    const auto first = static_cast<PageNumber>(entry * kBitmapPages);
    for (PageNumber number = first; number < store_.pageCount() && number - first < kBitmapPages; ++number) {
        std::uint8_t& byte = page[kBitmapBitsOffset + (number - first) / 8];
        byte = static_cast<std::uint8_t>(byte & ~(1U << (number % 8)));
    }
    map_.setBitmapPage(entry, bitmap);
    // The bitmap page itself may be the first one of the next bitmap.
    if (bitmap / kBitmapPages != entry) markUsed(bitmap);
}

}  // namespace jet
