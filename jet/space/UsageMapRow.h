#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "base/Value.h"
#include "jet/page/PageStore.h"
#include "jet/page/UsageMap.h"

namespace jet {

/// A usage map as it lies in its row, with its bits changed in place. It knows both kinds of row, but neither what a
/// bit means nor where further bits come from: those are decided by PageAllocator for the global map and by
/// UsageMapWriter for all others.
class UsageMapRow {
public:
    /// @param store  must outlive this
    /// @param row    not none
    /// @throws RuntimeError (damage) if there is no sound map
    UsageMapRow(PageStore& store, RowPointer row);

    bool isReference() const;

    /// Whether the page has a bit: in the range of an inline row, on a bitmap page that there is.
    bool covers(PageNumber page) const { return placeOf(page).has_value(); }

    /// False for a page without a bit.
    bool contains(PageNumber page) const;

    /// @param page  one that has a bit
    void put(PageNumber page, bool isSet);

    /// The first page with a set bit that is not less than `from`.
    std::optional<PageNumber> next(PageNumber from) const;

    base::Bytes bytes() const;

    /// Gives the row another length or kind.
    /// @return false, and nothing changed, if its page has no room for it
    bool replace(std::span<const std::uint8_t> row);

    /// Reference: number of entries, and the bitmap page of each, 0 for none.
    std::size_t entryCount() const;
    PageNumber bitmapPage(std::size_t entry) const;
    void setBitmapPage(std::size_t entry, PageNumber page);

private:
    struct Place {
        PageNumber page;
        std::size_t byte;
        std::uint8_t mask;
    };
    struct Extent {
        PageNumber page;
        std::size_t offset;  ///< of the row in its page
        std::size_t bytes;
    };
    Extent extent() const;
    std::optional<Place> placeOf(PageNumber page) const;
    std::uint32_t word(std::size_t offset) const;

    PageStore& store_;
    RowPointer row_;
};

}  // namespace jet
