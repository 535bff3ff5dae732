#include "jet/page/DataPageEditor.h"

#include <algorithm>
#include <cassert>
#include <cstring>

#include "jet/Errors.h"

namespace jet {

DataPageEditor::DataPageEditor(PageStore& store, PageNumber number, std::uint32_t owner) : number_(number) {
    const std::size_t noted = DataPage::read(store, number, owner).freeBytes();
    bytes_ = store.change(number);
    // If the two numbers differ, the page may hold rows that no slot shows.
    if (noted != freeBytes()) throw damaged(number, u"Der freie Platz der Datenseite passt nicht zu ihren Zeilen");
}

std::size_t DataPageEditor::freeBytes() const {
    const std::size_t count = slotCount();
    return slotEnd(count) - slotPlace(count);
}

Slot DataPageEditor::slot(std::size_t index) const {
    if (index >= slotCount()) {
        throw damaged(number_, u"Die Zeile " + base::decimal(index) + u" gibt es nicht");
    }
    const std::size_t start = slotStart(index);
    return {static_cast<SlotState>(word(slotPlace(index)) & kSlotStateMask),
            bytes_.subspan(start, slotEnd(index) - start)};
}

bool DataPageEditor::isEmpty() const {
    for (std::size_t i = 0; i < slotCount(); ++i) {
        if (slot(i).state != SlotState::Deleted) return false;
    }
    return true;
}

bool DataPageEditor::replace(std::size_t index, std::span<const std::uint8_t> row) {
    assert(index < slotCount());
    const std::size_t oldBytes = slotEnd(index) - slotStart(index);
    const std::size_t free = freeBytes();
    if (row.size() > oldBytes + free) return false;
    const std::size_t count = slotCount();
    const std::size_t end = slotEnd(index);
    const std::size_t lowest = slotEnd(count);
    const std::size_t laterBytes = slotStart(index) - lowest;
    const std::span<std::uint8_t> page = bytes_;
    const std::size_t start = end - row.size();
    std::memmove(page.data() + start - laterBytes, page.data() + lowest, laterBytes);
    std::copy(row.begin(), row.end(), page.begin() + static_cast<std::ptrdiff_t>(start));
    // The place that the moved rows have left.
    const std::size_t newLowest = start - laterBytes;
    if (newLowest > lowest) std::memset(page.data() + lowest, 0, newLowest - lowest);
    for (std::size_t i = index; i < count; ++i) {
        const std::size_t moved = slotStart(i) + oldBytes - row.size();
        base::putU16(page, slotPlace(i), static_cast<std::uint16_t>((word(slotPlace(i)) & kSlotStateMask) | moved));
    }
    base::putU16(page, kFreeBytesOffset, static_cast<std::uint16_t>(free + oldBytes - row.size()));
    return true;
}

void DataPageEditor::setState(std::size_t index, SlotState state) {
    assert(index < slotCount());
    base::putU16(bytes_, slotPlace(index),
                 static_cast<std::uint16_t>(slotStart(index) | static_cast<std::uint16_t>(state)));
}

void DataPageEditor::remove(std::size_t index) {
    replace(index, {});
    setState(index, SlotState::Deleted);
}

}  // namespace jet
