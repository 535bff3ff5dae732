#pragma once

#include <optional>

#include "jet/page/PageStore.h"
#include "jet/space/PagesInUse.h"
#include "jet/space/UsageMapRow.h"

namespace jet {

/// Allocates and frees pages. It keeps the global map, in which a set bit is a free page.
///
/// The rule: while a page is in use, its bit is not set. If a damaged map breaks the rule, the page is refused. Before
/// its first page and after its end the map says nothing. There, existing pages of the file count as used, because
/// their owner is unknown; pages beyond the end of the file count as free. The map grows with the file and with the
/// pages that become free: as long as page 1 has room, its row begins earlier or becomes longer. After that, a growing
/// file gets references to bitmap pages. A freed page does not; it is lost until the file has grown that far. See
/// docs/file-format.md, "Usage maps".
class PageAllocator {
public:
    /// @param store  must outlive the allocator
    /// @throws RuntimeError (damage) if the global map is not sound
    explicit PageAllocator(PageStore& store);

    /// The lowest free page, all zero, or a new page at the end of the file.
    /// @throws RuntimeError if the file would be larger than the format allows; (damage) if a table refers to the page
    PageNumber allocate();

    /// Frees a page to which nothing refers any more. Clears its first four bytes, so that nobody mistakes it for what
    /// it was.
    /// @throws RuntimeError (damage) if the page is free already, or must never be free
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
    PageNumber lowestFree_ = 0;        ///< all pages before it are in use
    std::optional<PagesInUse> inUse_;  ///< made when needed
};

}  // namespace jet
