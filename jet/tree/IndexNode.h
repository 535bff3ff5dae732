#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "base/Value.h"
#include "jet/page/PageStore.h"
#include "jet/tree/IndexPage.h"

namespace jet {

/// An index page being made or changed: its entries whole in memory, more of them than a page takes if need be. It is
/// read from a page and written to one; what it shows in between is in no file.
class IndexNode {
public:
    explicit IndexNode(bool isLeaf) : isLeaf_(isLeaf) {}
    explicit IndexNode(const IndexPage& page);

    bool isLeaf() const { return isLeaf_; }
    std::size_t size() const { return starts_.size() - 1; }

    /// Key and row pointer. Valid until the next change.
    std::span<const std::uint8_t> entry(std::size_t i) const {
        return std::span(bytes_).subspan(starts_[i], starts_[i + 1] - starts_[i]);
    }
    PageNumber child(std::size_t i) const { return children_[i]; }

    /// Children count the tail, the last of them; a leaf's entries count as such.
    std::size_t childCount() const { return size() + (tail != 0 ? 1 : 0); }
    PageNumber childAt(std::size_t i) const { return i < size() ? child(i) : tail; }
    void setChildAt(std::size_t i, PageNumber page) { (i < size() ? children_[i] : tail) = page; }

    /// Index of the first entry that is not less; size() if all are less.
    std::size_t lowerBound(std::span<const std::uint8_t> wanted) const;

    /// @param entry  not one of its own
    void insert(std::size_t i, std::span<const std::uint8_t> entry, PageNumber child = 0);
    void erase(std::size_t i);
    void replaceEntry(std::size_t i, std::span<const std::uint8_t> entry);

    /// Puts an entry behind all others.
    /// @param entry  greater than the last one
    /// @return false, and nothing changed, if a page has no room for it
    bool add(std::span<const std::uint8_t> entry, PageNumber child = 0);

    /// Bytes that its entries take on a page.
    std::size_t storedBytes() const { return storedBytes(0, size()); }
    bool fits() const { return storedBytes() <= kIndexEntriesBytes; }

    /// Bytes that they would take after absorb().
    std::size_t storedBytesBehind(const IndexNode& before, std::span<const std::uint8_t> upTo) const;

    /// Whether two pages take what is before and behind a cut.
    bool fitsCutAt(std::size_t cut) const;

    /// Where to cut a node of at least two entries that does not fit: the entries before go to another page. Both
    /// parts fit if that can be, and are about equally large; else the first one fits. Each part of a node has two
    /// children at least, if there are four.
    std::size_t middle() const;

    /// Moves the first entries to a node of their own; links and tail stay here.
    IndexNode takeFront(std::size_t count);

    /// Puts the contents of the page before in front of its own, and has that page's previous one then.
    /// @param upTo  a node's entry for the tail of the page before
    void absorb(const IndexNode& before, std::span<const std::uint8_t> upTo);

    /// @param page  all of its bytes are written
    void write(std::span<std::uint8_t> page, PageNumber definitionPage, std::uint8_t height) const;

    PageNumber previous = 0;
    PageNumber next = 0;
    PageNumber tail = 0;  ///< of a node

private:
    std::size_t wholeBytes(std::size_t begin, std::size_t end) const;
    std::size_t storedBytes(std::size_t begin, std::size_t end) const;

    bool isLeaf_;
    base::Bytes bytes_;                     ///< of all entries, without gaps
    std::vector<std::uint32_t> starts_{0};  ///< of each entry in the bytes, and the end of the last
    std::vector<PageNumber> children_;      ///< of a node, by entry
};

/// Longest entry of which two fit on a node, so that each one branches.
inline constexpr std::size_t kLongestIndexEntry = kIndexEntriesBytes / 2 - kIndexChildBytes;

}  // namespace jet
