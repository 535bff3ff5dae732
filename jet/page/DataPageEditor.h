#pragma once

#include <cstdint>
#include <span>

#include "jet/page/DataPage.h"
#include "jet/page/PageStore.h"

namespace jet {

/// A data page being changed. The editor keeps three rules: rows fill the end of the page without gaps, a slot never
/// changes its number, and the free bytes are those between the slots and the lowest row.
class DataPageEditor {
public:
    /// The page counts as changed as soon as an editor is made. To read a page, use DataPage.
    /// @param store  must outlive the editor
    /// @throws RuntimeError (damage) if the page is not a sound data page of this owner
    DataPageEditor(PageStore& store, PageNumber number, std::uint32_t owner);

    PageNumber number() const { return number_; }
    std::size_t slotCount() const { return word(kSlotCountOffset); }
    std::size_t freeBytes() const;

    /// The result is valid until the page changes again.
    /// @throws RuntimeError (damage) if the slot does not exist
    Slot slot(std::size_t index) const;

    /// Whether all slots are deleted.
    bool isEmpty() const;

    /// @return the number of the slot; empty if the row does not fit, and then the page is unchanged
    std::optional<std::uint8_t> append(std::span<const std::uint8_t> row, SlotState state = SlotState::Live) {
        return appendRow(bytes_, row, state);
    }

    /// Replaces the bytes of the slot and moves the later rows.
    /// @return false, and nothing changed, if the page has no room
    bool replace(std::size_t index, std::span<const std::uint8_t> row);

    void setState(std::size_t index, SlotState state);

    /// Marks the slot as deleted and closes the gap that its bytes leave.
    void remove(std::size_t index);

private:
    std::size_t slotStart(std::size_t index) const { return word(slotPlace(index)) & kSlotStartMask; }
    std::size_t slotEnd(std::size_t index) const { return index == 0 ? kPageSize : slotStart(index - 1); }
    std::uint16_t word(std::size_t offset) const { return base::ByteView(bytes_).u16(offset); }

    PageNumber number_;
    std::span<std::uint8_t> bytes_;
};

}  // namespace jet
