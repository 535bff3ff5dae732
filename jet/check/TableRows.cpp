#include "jet/check/TableRows.h"

#include <algorithm>
#include <cassert>

namespace jet {

const TableRows::Page* TableRows::find(PageNumber page) const {
    const auto found = std::lower_bound(pages_.begin(), pages_.end(), page,
                                        [](const Page& each, PageNumber wanted) { return each.number < wanted; });
    return found != pages_.end() && found->number == page ? &*found : nullptr;
}

std::optional<std::size_t> TableRows::slotNumber(RowPointer row) const {
    const Page* page = find(row.page);
    if (page == nullptr) return std::nullopt;
    const std::size_t end = page == &pages_.back() ? slotCount_ : (page + 1)->firstSlot;
    const std::size_t number = page->firstSlot + row.slot;
    if (number >= end) return std::nullopt;
    return number;
}

RowPointer TableRows::rowAt(std::size_t slotNumber) const {
    assert(slotNumber < slotCount_);
    const auto behind = std::upper_bound(pages_.begin(), pages_.end(), slotNumber,
                                         [](std::size_t wanted, const Page& each) { return wanted < each.firstSlot; });
    const Page& page = *(behind - 1);
    return {page.number, static_cast<std::uint8_t>(slotNumber - page.firstSlot)};
}

}  // namespace jet
