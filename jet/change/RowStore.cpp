#include "jet/change/RowStore.h"

#include <array>
#include <cassert>

#include "base/ByteView.h"
#include "jet/Errors.h"
#include "jet/WriteErrors.h"
#include "jet/page/MovedRow.h"
#include "jet/table/RowCodec.h"

namespace jet {
namespace {

std::array<std::uint8_t, kRowPointerBytes> pointerBytes(RowPointer target) {
    std::array<std::uint8_t, kRowPointerBytes> bytes{};
    base::putU32(bytes, 0, target.packed());
    return bytes;
}

}  // namespace

RowStore::RowStore(PageStore& store, PageAllocator& allocator, const TableDefinition& table)
    : store_(store), pages_(store, allocator, table.ownedPages, table.pagesWithSpace, table.page) {}

bool RowStore::contains(RowPointer row) {
    if (row.page >= store_.pageCount() || !pages_.contains(row.page)) return false;
    const DataPage page = pages_.read(row.page);
    return row.slot < page.slotCount() && isRow(page.slot(row.slot).state);
}

/// From the place of the row to the place of its bytes.
std::vector<RowPointer> RowStore::placesOf(RowPointer row) {
    std::vector<RowPointer> places{row};
    const DataPage page = pages_.read(row.page);
    const Slot slot = page.slot(row.slot);
    if (!isRow(slot.state)) throw damagedRow(row, u"Die Zeile ist nicht da");
    if (slot.state == SlotState::Live) return places;
    const MovedRow moved = followMovedRow(store_, row, slot, page.owner());
    places.insert(places.end(), moved.places.begin(), moved.places.end());
    return places;
}

void RowStore::removeBehind(const std::vector<RowPointer>& places) {
    for (std::size_t i = places.size(); i > 1; --i)
        pages_.remove(places[i - 1]);
}

void RowStore::replace(RowPointer row, std::span<const std::uint8_t> bytes) {
    assert(bytes.size() <= kMaxRowBytes);
    const std::vector<RowPointer> places = placesOf(row);
    DataPageEditor home = pages_.edit(row.page);
    if (home.replace(row.slot, bytes)) {
        home.setState(row.slot, SlotState::Live);
        removeBehind(places);
        return;
    }
    if (places.size() > 1 && pages_.edit(places.back().page).replace(places.back().slot, bytes)) return;
    const RowPointer target = pages_.add(bytes, SlotState::Hidden);
    // The pointer fits, because it has four bytes and rows are at least as long. Another writer may break that rule.
    if (!home.replace(row.slot, pointerBytes(target))) throw rowTooLong();
    home.setState(row.slot, SlotState::Moved);
    if (places.size() > 1)
        removeBehind(places);
    else
        pages_.offer(row.page);
}

void RowStore::remove(RowPointer row) {
    const std::vector<RowPointer> places = placesOf(row);
    removeBehind(places);
    pages_.remove(row);
}

}  // namespace jet
