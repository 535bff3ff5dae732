#include "jet/space/RowPages.h"

#include <cassert>

#include "jet/Errors.h"
#include "jet/WriteErrors.h"
#include "jet/table/RowCodec.h"

namespace jet {

RowPages::RowPages(PageStore& store, PageAllocator& allocator, RowPointer ownedMap, RowPointer pagesWithSpace,
                   std::uint32_t owner)
    : store_(store),
      allocator_(allocator),
      owned_(store, allocator, ownedMap),
      withSpace_(store, allocator, pagesWithSpace),
      owner_(owner) {}

void RowPages::requireOwn(PageNumber page) const {
    if (!owned_.contains(page)) throw damaged(page, u"Die Seite gehört nicht dem, der Zeilen auf ihr hat");
}

DataPageEditor RowPages::edit(PageNumber page) {
    requireOwn(page);
    return {store_, page, owner_};
}

DataPage RowPages::read(PageNumber page) const {
    requireOwn(page);
    return DataPage::read(store_, page, owner_);
}

RowPointer RowPages::addToNewPage(std::span<const std::uint8_t> row, SlotState state) {
    const PageNumber page = allocator_.allocate();
    clearDataPage(store_.change(page), owner_);
    owned_.set(page);
    const auto slot = edit(page).append(row, state);
    if (!slot) throw rowTooLong();
    return {page, *slot};
}

RowPointer RowPages::add(std::span<const std::uint8_t> row, SlotState state) {
    assert(row.size() <= kMaxRowBytes);
    for (auto page = withSpace_.next(0); page; page = withSpace_.next(*page + 1)) {
        if (const auto slot = edit(*page).append(row, state)) return {*page, *slot};
        withSpace_.clear(*page);
    }
    const RowPointer place = addToNewPage(row, state);
    withSpace_.set(place.page);
    return place;
}

RowPointer RowPages::addAlone(std::span<const std::uint8_t> row) {
    return addToNewPage(row, SlotState::Live);
}

void RowPages::remove(RowPointer row) {
    DataPageEditor page = edit(row.page);
    if (page.slot(row.slot).state == SlotState::Deleted) throw damagedRow(row, u"Die Zeile ist schon gelöscht");
    page.remove(row.slot);
    if (!page.isEmpty()) {
        offer(row.page);
        return;
    }
    owned_.clear(row.page);
    withSpace_.clear(row.page);
    allocator_.free(row.page);
}

void RowPages::offer(PageNumber page) {
    if (!withSpace_.contains(page)) withSpace_.set(page);
}

}  // namespace jet
