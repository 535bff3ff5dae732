#pragma once

#include <cstdint>
#include <span>

#include "jet/page/DataPageEditor.h"
#include "jet/space/PageAllocator.h"
#include "jet/space/UsageMapWriter.h"

namespace jet {

/// The data pages of one owner, a table or a column of long values, with rows put on them and taken off.
///
/// Two maps keep the books: of all pages, and of those that may have room. A page leaves the second one when a row
/// does not fit, and comes back when a row of it goes; so each page is tried in vain only once. A page whose last row
/// goes is free for everybody. Slots of deleted rows are never given again. See docs/file-format.md, "Data pages".
class RowPages {
public:
    /// @param owner  what stands in the pages' header: a definition's page, or kLongValueOwner
    /// @throws RuntimeError (damage) if there are no sound maps
    RowPages(PageStore& store, PageAllocator& allocator, RowPointer ownedMap, RowPointer mapOfRoom,
             std::uint32_t owner);

    /// On any page with room, or a further one.
    /// @param row  at most kMaxRowBytes
    /// @throws RuntimeError if the file is full
    RowPointer add(std::span<const std::uint8_t> row, SlotState state = SlotState::Live);

    /// On a page of its own, where no other row will come.
    RowPointer addAlone(std::span<const std::uint8_t> row);

    void remove(RowPointer row);

    /// Says that the page may have room again.
    void offer(PageNumber page);

    /// @throws RuntimeError (damage) if the page is not one of these
    DataPageEditor edit(PageNumber page);
    DataPage read(PageNumber page) const;

    bool contains(PageNumber page) const { return owned_.contains(page); }

private:
    void requireOwn(PageNumber page) const;
    PageNumber addPage();

    PageStore& store_;
    PageAllocator& allocator_;
    UsageMapWriter owned_;
    UsageMapWriter withRoom_;
    std::uint32_t owner_;
};

}  // namespace jet
