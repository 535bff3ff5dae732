#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "jet/page/PageSource.h"

/// A page of rows. They are rows of a table, parts of long values, or usage maps.
///
///     offset size
///     0      1    1
///     1      1    1
///     2      2    free bytes between offset table and lowest row
///     4      4    page of the owning definition; "LVAL" for long values; 0 for usage maps
///     8      4    stamp of a long value chain, else 0
///     12     2    number of slots n
///     14     2n   slots: 13 bits of offset, flags above
///
/// Rows fill the page from its end downwards: slot 0 ends at 4096, each other slot where the slot before it begins.
/// See docs/file-format.md, "Data pages".
namespace jet {

inline constexpr std::uint32_t kLongValueOwner = 0x4C41564C;  ///< "LVAL"
inline constexpr std::size_t kDataPageHeaderBytes = 14;
inline constexpr std::size_t kSlotBytes = 2;

inline constexpr std::size_t kStampOffset = 8;
inline constexpr std::size_t kSlotCountOffset = 12;
inline constexpr std::uint16_t kSlotStartMask = 0x1FFF;
inline constexpr std::uint16_t kSlotStateMask = 0xC000;

/// The offset of a slot's word in its page.
constexpr std::size_t slotPlace(std::size_t index) {
    return kDataPageHeaderBytes + kSlotBytes * index;
}

/// The engine gives a page at most this many slots.
inline constexpr std::size_t kMaxSlotsOfPage = 255;

enum class SlotState : std::uint16_t {
    Live = 0x0000,
    Moved = 0x4000,    ///< live; the row's first 4 bytes point to its data
    Hidden = 0x8000,   ///< the data of one Moved slot; not a row of its own
    Deleted = 0xC000,  ///< keeps its slot so that the other slots keep their numbers
};

/// Whether a slot in this state is a row. The bytes of a moved row are in another slot.
constexpr bool isRow(SlotState state) {
    return state == SlotState::Live || state == SlotState::Moved;
}

struct Slot {
    SlotState state;
    std::span<const std::uint8_t> bytes;
};

class DataPage {
public:
    DataPage() = default;

    /// Checks the page kind and all slots.
    /// @throws RuntimeError (damage)
    explicit DataPage(PageView page);

    /// @throws RuntimeError (damage) if it is not a data page, or belongs to another owner
    static DataPage read(PageSource& source, PageNumber number, std::uint32_t owner);

    PageNumber number() const { return page_.number; }
    std::uint32_t owner() const { return page_.bytes.u32(kOwnerOffset); }
    std::uint32_t stamp() const { return page_.bytes.u32(kStampOffset); }
    std::size_t freeBytes() const { return page_.bytes.u16(kFreeBytesOffset); }
    std::size_t slotCount() const { return slotCount_; }

    /// @throws RuntimeError (damage) if the page has no such slot
    Slot slot(std::size_t index) const;

    bool hasLiveRows() const;

    /// The view that keeps the bytes of all slots alive.
    const PageView& page() const { return page_; }

private:
    PageView page_;
    std::size_t slotCount_ = 0;
};

/// The pointer at the beginning of a moved slot, or of a part of a long value.
/// @param bytes  at least kRowPointerBytes
inline RowPointer pointerAt(std::span<const std::uint8_t> bytes) {
    return RowPointer::unpack(base::ByteView{bytes}.u32(0));
}

/// Makes the page an empty data page; the rest of its bytes becomes zero.
void clearDataPage(std::span<std::uint8_t> page, std::uint32_t owner, std::uint32_t stamp = 0);

/// Appends a row as a new slot.
/// @param page  4096 bytes of a sound data page
/// @return the number of the slot; empty if the row does not fit, and then the page is unchanged
std::optional<std::uint8_t> appendRow(std::span<std::uint8_t> page, std::span<const std::uint8_t> row,
                                      SlotState state = SlotState::Live);

}  // namespace jet
