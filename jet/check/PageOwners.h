#pragma once

#include <algorithm>
#include <optional>
#include <unordered_set>
#include <vector>

#include "jet/check/Findings.h"
#include "jet/page/DataPage.h"
#include "jet/page/PageSource.h"

namespace jet {

/// The pages that a usage map names, those inside the file.
struct CheckedMap {
    std::vector<PageNumber> pages;  ///< ascending

    bool contains(PageNumber page) const { return std::binary_search(pages.begin(), pages.end(), page); }
};

/// Who owns which page: the checker's ledger. Each page can be claimed once; in the end it is held against the map
/// of free pages.
class PageOwners {
public:
    using Owner = std::uint32_t;

    /// Both must outlive the ledger.
    PageOwners(PageSource& source, Findings& findings);

    Owner addOwner(base::Text name);

    /// @return false, with a fault, if the file has no such page or somebody owns it already
    bool claim(PageNumber page, Owner owner, const Place& place);

    /// Reads a usage map, and claims the page of its row and its bitmap pages.
    /// @return nothing, with a fault, if it cannot be read or serves somebody else
    std::optional<CheckedMap> readMap(RowPointer row, const Place& place);

    /// The map of pages with room must keep to the map of owned pages.
    /// @return the map, if it can be read
    std::optional<CheckedMap> checkFreeMap(RowPointer row, const CheckedMap& owned, const Place& place);

    /// Claims nothing further: compares the ledger with the map of free pages.
    /// @return pages that nobody owns and the map does not call free
    std::vector<PageNumber> checkFreePages(RowPointer freeMap);

    /// Whether a structure that was read so far has its map there.
    bool isMapInUse(RowPointer row) const { return mapRows_.contains(row.packed()); }

private:
    bool claimMapPage(PageNumber page, const Place& place);
    void claimBitmapPages(RowPointer row, const Place& place);

    PageSource& source_;
    Findings& findings_;
    std::vector<base::Text> names_;
    std::vector<Owner> owners_;  ///< by page; 0 = nobody
    std::unordered_set<std::uint32_t> mapRows_;
    Owner mapOwner_;
};

/// The free-bytes field of a data page, which every writer keeps exact.
void checkFreeBytes(const DataPage& page, Findings& findings, const Place& place);

}  // namespace jet
