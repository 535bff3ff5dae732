#include "forms/KeyIndex.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace forms {
namespace {

constexpr std::size_t kFewestSlots = 16;

}  // namespace

void KeyIndex::insert(std::uint32_t hash, Row row) {
    if (3 * (count_ + 1) > 2 * slots_.size()) grow();
    put({hash, row});
    ++count_;
}

/// A row after the gap moves into it if the gap would hide it from a search; this goes on up to the next free slot.
void KeyIndex::erase(std::uint32_t hash, Row row) {
    std::size_t gap = homeOf(hash);
    while (marks_[gap] != markOf(hash) || slots_[gap].row != row) {
        assert(marks_[gap] != kFree);
        gap = after(gap);
    }
    for (std::size_t place = after(gap); marks_[place] != kFree; place = after(place)) {
        const std::size_t fromHome = (place - homeOf(slots_[place].hash)) & (slots_.size() - 1);
        const std::size_t fromGap = (place - gap) & (slots_.size() - 1);
        if (fromHome < fromGap) continue;
        marks_[gap] = marks_[place];
        slots_[gap] = slots_[place];
        gap = place;
    }
    marks_[gap] = kFree;
    --count_;
}

void KeyIndex::clear() {
    // The table stays: a cleared list is mostly filled again, with about as many rows.
    std::ranges::fill(marks_, kFree);
    count_ = 0;
}

void KeyIndex::put(Slot slot) {
    std::size_t place = homeOf(slot.hash);
    while (marks_[place] != kFree)
        place = after(place);
    marks_[place] = markOf(slot.hash);
    slots_[place] = slot;
}

void KeyIndex::grow() {
    const std::size_t size = std::max(kFewestSlots, 2 * slots_.size());
    const std::vector<Mark> marksBefore = std::exchange(marks_, std::vector<Mark>(size, kFree));
    const std::vector<Slot> slotsBefore = std::exchange(slots_, std::vector<Slot>(size));
    for (std::size_t place = 0; place < slotsBefore.size(); ++place)
        if (marksBefore[place] != kFree) put(slotsBefore[place]);
}

}  // namespace forms
