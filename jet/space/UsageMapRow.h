#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "base/Value.h"
#include "jet/page/PageStore.h"
#include "jet/page/UsageMap.h"

namespace jet {

/// A usage map whose bits are changed in place, in its row. It knows both kinds of row. It does not know what a bit
/// means or how the map grows: PageAllocator decides that for the global map, UsageMapWriter for all others.
class UsageMapRow {
public:
    /// @param store  must outlive this
    /// @param row    not the pointer "none"
    /// @throws RuntimeError (damage) if the map is not sound
    UsageMapRow(PageStore& store, RowPointer row);

    bool isReference() const;

    /// Whether the map has a bit for the page: in the range of an inline row, or on an existing bitmap page.
    bool covers(PageNumber page) const { return placeOf(page).has_value(); }

    /// False for a page without a bit.
    bool contains(PageNumber page) const;

    /// @param page  must have a bit
    void put(PageNumber page, bool isSet);

    /// The first page with a set bit whose number is at least `from`.
    std::optional<PageNumber> next(PageNumber from) const;

    /// All pages with a set bit whose number is below `end`, ascending.
    std::vector<PageNumber> pagesBefore(PageNumber end) const;

    base::Bytes bytes() const;

    /// Replaces the bytes of the row; its length and kind may change.
    /// @return false, and nothing changed, if the page of the row has no room
    bool replace(std::span<const std::uint8_t> row);

    /// Kind 1: the number of entries, and the bitmap page of each entry, 0 for none.
    std::size_t entryCount() const;
    PageNumber bitmapPage(std::size_t entry) const;
    void setBitmapPage(std::size_t entry, PageNumber page);

private:
    struct Place {
        PageNumber page;
        std::size_t bitsOffset;  ///< where the bits of the map, or this part of them, begin in the page
        std::size_t bit;
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
