#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "base/Value.h"
#include "jet/page/PageStore.h"
#include "jet/tree/IndexPage.h"

namespace jet {

/// An index page while it is made or changed. It holds its entries in full in memory, and may for a time hold more than
/// fit on a page. It is read from a page and written to a page; the states in between are in no file.
class IndexNode {
public:
    explicit IndexNode(bool isLeaf) : isLeaf_(isLeaf) {}
    explicit IndexNode(const IndexPage& page);

    bool isLeaf() const { return isLeaf_; }
    std::size_t size() const { return starts_.size() - 1; }

    /// Key and row pointer of entry i. The result is valid until the next change.
    std::span<const std::uint8_t> entry(std::size_t i) const {
        return std::span(bytes_).subspan(starts_[i], starts_[i + 1] - starts_[i]);
    }
    void copyEntry(std::size_t i, base::Bytes& copy) const { copy.assign(entry(i).begin(), entry(i).end()); }
    PageNumber child(std::size_t i) const { return children_[i]; }

    /// Number of children of a node, the tail included; for a leaf, the number of entries.
    std::size_t childCount() const { return size() + (tail != 0 ? 1 : 0); }
    PageNumber childAt(std::size_t i) const { return i < size() ? child(i) : tail; }
    void setChildAt(std::size_t i, PageNumber page) { (i < size() ? children_[i] : tail) = page; }

    /// Index of the first entry that is not less than `wanted`; size() if all are less.
    std::size_t lowerBound(std::span<const std::uint8_t> wanted) const;

    /// @param entry  must not be a view of this node's own bytes
    void insert(std::size_t i, std::span<const std::uint8_t> entry, PageNumber child = 0);
    void erase(std::size_t i);
    void replaceEntry(std::size_t i, std::span<const std::uint8_t> entry);

    /// Appends an entry.
    /// @param entry  greater than the last one
    /// @return false, and nothing changed, if the page has no room
    bool add(std::span<const std::uint8_t> entry, PageNumber child = 0);

    /// Bytes that the entries take on a page.
    std::size_t storedBytes() const { return storedBytes(0, size()); }
    bool fits() const { return storedBytes() <= kIndexEntriesBytes; }

    /// Bytes that the entries would take after absorb().
    std::size_t storedBytesBehind(const IndexNode& before, std::span<const std::uint8_t> upTo) const;

    /// Whether the parts before and after the cut each fit on a page.
    bool fitsCutAt(std::size_t cut) const;

    /// Where to cut a node of at least two entries that does not fit; the entries before the cut go to another page. If
    /// possible both parts fit and have about the same size; otherwise the first part fits. If a node has at least four
    /// children, each part gets at least two.
    std::size_t middle() const;

    /// Moves the first `count` entries to a new node. Links and tail stay here.
    IndexNode takeFront(std::size_t count);

    /// Takes over the contents of the previous page, in front of its own entries, and that page's link to its previous
    /// page.
    /// @param upTo  for a node: the entry for the tail of the previous page
    void absorb(const IndexNode& before, std::span<const std::uint8_t> upTo);

    /// @param page  all of its bytes are overwritten
    void write(std::span<std::uint8_t> page, PageNumber definitionPage, std::uint8_t height) const;

    PageNumber previous = 0;
    PageNumber next = 0;
    PageNumber tail = 0;  ///< of a node

private:
    std::size_t wholeBytes(std::size_t begin, std::size_t end) const;
    std::size_t storedBytes(std::size_t begin, std::size_t end) const;

    bool isLeaf_;
    base::Bytes bytes_;                     ///< of all entries, without gaps
    std::vector<std::uint32_t> starts_{0};  ///< of each entry in bytes_, and the end of the last
    std::vector<PageNumber> children_;      ///< of a node, one for each entry
};

/// The longest allowed entry. Two of them fit on a node, so every node can have several children.
inline constexpr std::size_t kLongestIndexEntry = kIndexEntriesBytes / 2 - kIndexChildBytes;

}  // namespace jet
