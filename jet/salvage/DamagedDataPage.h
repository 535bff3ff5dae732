#pragma once

#include <cstdint>
#include <span>

#include "jet/page/DataPage.h"
#include "jet/salvage/DamagedFile.h"

namespace jet {

/// A slot of a page of which any byte may be wrong.
struct DamagedSlot {
    SlotState state = SlotState::Deleted;
    std::span<const std::uint8_t> bytes;  ///< empty if the place is impossible
    bool isPossible = false;              ///< its bytes are inside the page, outside the slots, and the file has them
    bool isInOrder = false;               ///< and its neighbours agree: the places of rows never rise
};

/// A data page of which any byte may be wrong. In contrast to DataPage, a wrong word costs the rows whose beginning or
/// end it is, and no others. A wrong number of slots is replaced if the free bytes of the page tell the right one.
class DamagedDataPage {
public:
    DamagedDataPage() = default;
    /// @param bytesThere  of an incomplete page
    explicit DamagedDataPage(PageView page, std::size_t bytesThere = kPageSize);
    static DamagedDataPage read(DamagedFile& file, PageNumber number);

    PageNumber number() const { return page_.number; }
    std::size_t slotCount() const { return slotCount_; }
    DamagedSlot slot(std::size_t index) const;
    const PageView& page() const { return page_; }

private:
    std::size_t countSlots() const;
    bool freeBytesAgree(std::size_t count) const;
    std::size_t impossibleSlots(std::size_t count) const;
    std::size_t start(std::size_t index) const { return word(index) & kSlotStartMask; }
    std::size_t end(std::size_t index) const { return index == 0 ? kPageSize : start(index - 1); }
    std::uint16_t word(std::size_t index) const { return page_.bytes.u16(slotPlace(index)); }

    PageView page_;
    std::size_t bytesThere_ = kPageSize;
    std::size_t slotCount_ = 0;
};

}  // namespace jet
