#pragma once

#include <span>
#include <vector>

#include "base/Value.h"
#include "jet/fresh/FreshPages.h"

namespace jet {

/// The usage maps of a file that is being made. Each map gets its row at the start and its pages at the end.
///
/// A map is inline if its pages are within a range of 512; otherwise it has its own bitmap pages.
class FreshMaps {
public:
    explicit FreshMaps(FreshPages& pages) : pages_(pages) {}

    /// Reserves the next row for a map. Rows that are reserved in sequence share a page as far as they fit.
    RowPointer reserve();

    /// The next map begins on a new page.
    void startPage() { free_ = 0; }

    /// @param pages  in ascending order
    void set(RowPointer map, std::span<const PageNumber> pages);

    /// Writes the pages that hold the rows.
    void finish();

private:
    struct MapPage {
        PageNumber number = 0;
        std::vector<base::Bytes> rows;
    };

    base::Bytes rowFor(std::span<const PageNumber> pages);

    FreshPages& pages_;
    std::vector<MapPage> mapPages_;
    std::size_t free_ = 0;  ///< rows that still fit on the last page
};

/// Writes page 1 with the global map, in which a set bit is a free page. All pages handed out are in use. A small file
/// has the usual row for 512 pages, a larger file has a longer row, and the largest files have bitmap pages, which this
/// function allocates.
void writeGlobalMap(FreshPages& pages);

}  // namespace jet
