#include "jet/change/RowStore.h"

#include <array>
#include <cassert>

#include "base/ByteView.h"
#include "jet/Errors.h"
#include "jet/WriteErrors.h"
#include "jet/table/RowCodec.h"

namespace jet {
namespace {

std::array<std::uint8_t, 4> pointerBytes(RowPointer target) {
    std::array<std::uint8_t, 4> bytes{};
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
    while (places.size() <= kMaxMoves + 1) {
        const RowPointer place = places.back();
        const DataPage page = pages_.read(place.page);
        const Slot slot = page.slot(place.slot);
        if (slot.state == (places.size() == 1 ? SlotState::Live : SlotState::Hidden)) return places;
        if (slot.state != SlotState::Moved || slot.bytes.size() < 4) break;
        places.push_back(RowPointer::unpack(base::ByteView{slot.bytes}.u32(0)));
    }
    throw damagedRow(row, u"Die Zeile ist nicht da, oder nicht dort, wohin sie verschoben ist");
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
