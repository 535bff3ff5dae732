#include "forms/KeyIndex.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace forms {
namespace {

constexpr std::size_t kFewestSlots = 16;

}  // namespace

void KeyIndex::insert(std::uint32_t hash, Row row) {
    assert(row != kFree);
    if (3 * (count_ + 1) > 2 * slots_.size()) grow();
    put({hash, row});
    ++count_;
}

/// A row after the gap moves into it if the gap would hide it from a search; this goes on up to the next free slot.
void KeyIndex::erase(std::uint32_t hash, Row row) {
    std::size_t gap = homeOf(hash);
    while (slots_[gap].row != row) {
        assert(slots_[gap].row != kFree);
        gap = after(gap);
    }
    for (std::size_t place = after(gap); slots_[place].row != kFree; place = after(place)) {
        const std::size_t fromHome = (place - homeOf(slots_[place].hash)) & (slots_.size() - 1);
        const std::size_t fromGap = (place - gap) & (slots_.size() - 1);
        if (fromHome < fromGap) continue;
        slots_[gap] = slots_[place];
        gap = place;
    }
    slots_[gap] = {};
    --count_;
}

void KeyIndex::clear() {
    // The table stays: a cleared list is mostly filled again, with about as many rows.
    std::fill(slots_.begin(), slots_.end(), Slot());
    count_ = 0;
}

void KeyIndex::put(Slot slot) {
    std::size_t place = homeOf(slot.hash);
    while (slots_[place].row != kFree)
        place = after(place);
    slots_[place] = slot;
}

void KeyIndex::grow() {
    const std::vector<Slot> before =
        std::exchange(slots_, std::vector<Slot>(std::max(kFewestSlots, 2 * slots_.size())));
    for (const Slot& slot : before)
        if (slot.row != kFree) put(slot);
}

}  // namespace forms
