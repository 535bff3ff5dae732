#pragma once

#include <optional>
#include <vector>

#include "jet/salvage/DamagedFile.h"

namespace jet {

/// What each page of the file says of itself, read once from the first to the last. 5 bytes of memory for each page.
class PageScan {
public:
    explicit PageScan(DamagedFile& file);

    PageNumber pageCount() const { return static_cast<PageNumber>(kinds_.size()); }
    PageKind kind(PageNumber page) const { return kinds_[page]; }
    /// The owner that a data or index page names; the next page of the chain if it is a definition.
    std::uint32_t owner(PageNumber page) const { return owners_[page]; }

    /// Whether the global map calls the page free. False if the map cannot be read.
    bool isFree(PageNumber page) const { return !isFree_.empty() && isFree_[page]; }
    bool knowsFreePages() const { return !isFree_.empty(); }

private:
    void readFreePages(DamagedFile& file);

    std::vector<PageKind> kinds_;
    std::vector<std::uint32_t> owners_;
    std::vector<bool> isFree_;
};

/// A map of pages of which any byte may be wrong.
struct DamagedMap {
    std::optional<std::vector<PageNumber>> pages;  ///< those that the file has; nothing if the map cannot be read
    bool goesBeyondFile = false;                   ///< the map, or a page that it names, is after the end of the file
};
DamagedMap readDamagedMap(DamagedFile& file, RowPointer row);

}  // namespace jet
