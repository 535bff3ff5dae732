#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "base/Value.h"
#include "jet/fresh/FreshPages.h"
#include "jet/tree/IndexPage.h"

namespace jet {

/// Supplies the entries of an index one after the other: key and row pointer, ascending. Empty after the last. The
/// bytes need to be there only until the next call.
using EntryFeed = std::function<std::span<const std::uint8_t>()>;

/// The entries of an index: collected in any order, then sorted.
class IndexEntries {
public:
    /// @param hasNull  whether a part of the key is null. Such keys may be equal in a unique index.
    void add(std::span<const std::uint8_t> key, RowPointer row, bool hasNull = false);
    std::size_t size() const { return places_.size(); }
    void sort();

    /// Key and row pointer of entry i.
    std::span<const std::uint8_t> entry(std::size_t i) const;
    std::span<const std::uint8_t> key(std::size_t i) const { return withoutRow(entry(i)); }
    bool hasNull(std::size_t i) const { return places_[i].hasNull; }

    /// All entries, after sort(). The entries must outlive the feed.
    EntryFeed feed() const;

private:
    struct Place {
        std::size_t offset;
        std::size_t bytes;
        bool hasNull;
    };
    static std::span<const std::uint8_t> withoutRow(std::span<const std::uint8_t> entry) {
        return entry.first(entry.size() - kIndexRowBytes);
    }

    base::Bytes bytes_;
    std::vector<Place> places_;
};

/// Builds a whole index tree from its entries: fills the leaves one after the other, then the levels of nodes above.
/// All pages are linked with their neighbours. The root keeps its page. Only nodes on the rightmost path have a tail;
/// all others have an entry for every child.
///
/// @param root  allocated before
/// @return all pages of the tree in ascending order
std::vector<PageNumber> buildIndexTree(FreshPages& pages, PageNumber definitionPage, PageNumber root,
                                       const EntryFeed& nextEntry);

}  // namespace jet
