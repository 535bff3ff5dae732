#pragma once

#include <algorithm>
#include <optional>
#include <unordered_set>
#include <vector>

#include "jet/check/Findings.h"
#include "jet/page/DataPage.h"
#include "jet/page/PageSource.h"

namespace jet {

/// The pages inside the file that a usage map names.
struct CheckedMap {
    std::vector<PageNumber> pages;  ///< in ascending order

    bool contains(PageNumber page) const { return std::binary_search(pages.begin(), pages.end(), page); }
};

/// Records which page belongs to whom. Each page can be claimed once. At the end the record is compared with the map of
/// free pages.
class PageOwners {
public:
    using Owner = std::uint32_t;

    /// Source and findings must outlive this object.
    PageOwners(PageSource& source, Findings& findings);

    Owner addOwner(base::Text name);

    /// @return false, with a fault, if the file does not have the page or the page has an owner already
    bool claim(PageNumber page, Owner owner, const Place& place);

    /// Reads a usage map, and claims the page of its row and its bitmap pages.
    /// @return nothing, with a fault, if the map cannot be read or already belongs to another owner
    std::optional<CheckedMap> readMap(RowPointer row, const Place& place);

    /// Reads and checks the map of pages with space. It must not name pages that the map of owned pages lacks.
    /// @return the map, if it can be read
    std::optional<CheckedMap> readPagesWithSpace(RowPointer row, const CheckedMap& owned, const Place& place);

    /// Compares the claimed pages with the map of free pages. To be called after all claims.
    /// @return the pages that have no owner, although the map does not call them free
    std::vector<PageNumber> checkFreePages(RowPointer freeMap);

    /// Whether one of the structures read so far has its map there.
    bool isMapInUse(RowPointer row) const { return mapRows_.contains(row.packed()); }

private:
    bool claimMapPage(PageNumber page, const Place& place);
    void claimBitmapPages(RowPointer row, const Place& place);

    PageSource& source_;
    Findings& findings_;
    std::vector<base::Text> names_;
    std::vector<Owner> owners_;  ///< by page; 0 = no owner
    std::unordered_set<std::uint32_t> mapRows_;
    Owner mapOwner_;
};

/// Checks the field for free bytes on a data page. Every writer keeps it exact.
void checkFreeBytes(const DataPage& page, Findings& findings, const Place& place);

}  // namespace jet
