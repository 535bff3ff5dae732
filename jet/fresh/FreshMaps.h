#pragma once

#include <span>
#include <vector>

#include "base/Value.h"
#include "jet/fresh/FreshPages.h"

namespace jet {

/// The usage maps of a file that is being made: each has its row from the start, its pages come at the end.
///
/// A map whose pages lie within 512 is inline, any other has bitmap pages of its own.
class FreshMaps {
public:
    explicit FreshMaps(FreshPages& pages) : pages_(pages) {}

    /// The next row for a map. Rows that are asked for together lie on one page as far as they fit.
    RowPointer reserve();

    /// Lets the next map begin a new page.
    void startPage() { free_ = 0; }

    /// @param pages  in ascending order
    void set(RowPointer map, std::span<const PageNumber> pages);

    /// Writes the pages of rows.
    void finish();

private:
    struct MapPage {
        PageNumber number = 0;
        std::vector<base::Bytes> rows;
    };

    base::Bytes rowFor(std::span<const PageNumber> pages);

    FreshPages& pages_;
    std::vector<MapPage> mapPages_;
    std::size_t free_ = 0;  ///< rows that the last page still takes
};

/// Writes page 1 with the global map, in which a set bit is a free page: all pages handed out are in use. A small
/// file has the usual row of 512 pages, a larger one a longer row, the largest ones bitmap pages, which are
/// allocated here.
void writeGlobalMap(FreshPages& pages);

}  // namespace jet
