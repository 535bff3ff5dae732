#pragma once

#include <optional>

#include "jet/page/PageStore.h"
#include "jet/space/PagesInUse.h"
#include "jet/space/UsageMapRow.h"

namespace jet {

/// Hands out pages and takes them back: the keeper of the global map, in which a set bit is a free page.
///
/// Law: no page of the file is in use while its bit is set; where a damaged map breaks it, the page is refused. Where
/// the map is silent (before its first page, or behind its end) the pages that the file has already count as used,
/// since nobody says to whom they belong; those that it does not have yet count as free. The map grows with the file
/// and with the pages that become free: its row on page 1 begins earlier or becomes longer as long as there is room.
/// After that a growing file gets references to bitmap pages; a page that becomes free does not, and is lost until
/// then. See docs/file-format.md, "Usage maps".
class PageAllocator {
public:
    /// @param store  must outlive the allocator
    /// @throws RuntimeError (damage) if there is no sound global map
    explicit PageAllocator(PageStore& store);

    /// The lowest free page, all zero, or a further one at the end of the file.
    /// @throws RuntimeError if the file would be larger than the format allows; (damage) if a table refers to the page
    PageNumber allocate();

    /// Nothing may refer to the page any more. Its first four bytes are cleared, so that nobody takes it for what it
    /// was.
    /// @throws RuntimeError (damage) if it is free already or belongs to no one but the file itself
    void free(PageNumber page);

private:
    void requireUnused(PageNumber page);
    PageNumber append();
    void markUsed(PageNumber page);
    bool widenRow(PageNumber page);
    void turnIntoReferences(PageNumber page);
    void addBitmap(std::size_t entry);

    PageStore& store_;
    UsageMapRow map_;
    PageNumber lowestFree_ = 0;        ///< no page before it is free
    std::optional<PagesInUse> inUse_;  ///< made when needed
};

}  // namespace jet
