#pragma once

#include <cstdint>
#include <span>

#include "jet/page/DataPageEditor.h"
#include "jet/space/PageAllocator.h"
#include "jet/space/UsageMapWriter.h"

namespace jet {

/// The data pages of one owner (a table or a column of long values). Rows are added to them and removed.
///
/// Two maps record the pages: one has all pages, the other those that may have space. A page leaves the second map when
/// a row does not fit, and returns when one of its rows is removed. So no full page is tried twice. A page becomes
/// free when its last row is removed. Slots of deleted rows are never used again. See docs/file-format.md, "Data
/// pages".
class RowPages {
public:
    /// @param owner  the owner named in the headers of the pages: a definition's page, or kLongValueOwner
    /// @throws RuntimeError (damage) if the maps are not sound
    RowPages(PageStore& store, PageAllocator& allocator, RowPointer ownedMap, RowPointer pagesWithSpace,
             std::uint32_t owner);

    /// Adds a row to any page with space, or to a new page.
    /// @param row  at most kMaxRowBytes
    /// @throws RuntimeError if the file is full, or the row longer than a page takes
    RowPointer add(std::span<const std::uint8_t> row, SlotState state = SlotState::Live);

    /// Adds a row to a page of its own, to which no other row will be added.
    RowPointer addAlone(std::span<const std::uint8_t> row);

    void remove(RowPointer row);

    /// Records that the page may have space again.
    void offer(PageNumber page);

    /// @throws RuntimeError (damage) if the page is not one of this owner
    DataPageEditor edit(PageNumber page);
    DataPage read(PageNumber page) const;

    bool contains(PageNumber page) const { return owned_.contains(page); }

private:
    void requireOwn(PageNumber page) const;
    RowPointer addToNewPage(std::span<const std::uint8_t> row, SlotState state);

    PageStore& store_;
    PageAllocator& allocator_;
    UsageMapWriter owned_;
    UsageMapWriter withSpace_;
    std::uint32_t owner_;
};

}  // namespace jet
