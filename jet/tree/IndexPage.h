#pragma once

#include <algorithm>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <vector>

#include "base/Value.h"
#include "jet/page/PageSource.h"

/// One page of an index tree. Its entries (key and row pointer together) must ascend strictly as byte strings.
///
///     offset size
///     0      1    3 node, 4 leaf
///     1      1    1
///     2      2    free bytes: 3616 less the bytes of the entries
///     4      4    page of the table's definition
///     12     4    previous page of the same level, 0 for none
///     16     4    next page of the same level, 0 for none
///     20     4    node: tail, the child after the last entry, 0 for none
///     24     2    length of the prefix that all entries share
///     26     1    leaf 0, node its height above the leaves
///     27     453  entry mask: bit b set = an entry ends b bytes after offset 480
///     480    3616 entries, the first in full, the others without the prefix
///
/// An entry is the key, then page (3 bytes) and slot (1 byte) of the row, big-endian; in a node the child's
/// page (4 bytes, big-endian) follows. See docs/file-format.md, "Index pages".
namespace jet {

inline constexpr std::size_t kIndexPreviousOffset = 12;
inline constexpr std::size_t kIndexNextOffset = 16;
inline constexpr std::size_t kIndexTailOffset = 20;
inline constexpr std::size_t kIndexPrefixOffset = 24;
inline constexpr std::size_t kIndexHeightOffset = 26;
inline constexpr std::size_t kIndexMaskOffset = 27;
inline constexpr std::size_t kIndexEntriesOffset = 480;
inline constexpr std::size_t kIndexMaskBytes = kIndexEntriesOffset - kIndexMaskOffset;
inline constexpr std::size_t kIndexEntriesBytes = kPageSize - kIndexEntriesOffset;
inline constexpr std::size_t kIndexRowBytes = kRowPointerBytes;
inline constexpr std::size_t kIndexChildBytes = 4;

/// A page holds at least seven of the longest entries, so no file has a tree with more levels.
inline constexpr std::size_t kMaxIndexHeight = 16;

/// The order of entries and keys: byte by byte. A beginning of a longer entry comes before it.
inline std::strong_ordering compareEntries(std::span<const std::uint8_t> a, std::span<const std::uint8_t> b) {
    const std::size_t count = std::min(a.size(), b.size());
    const int order = count == 0 ? 0 : std::memcmp(a.data(), b.data(), count);
    if (order != 0) return order <=> 0;
    return a.size() <=> b.size();
}

inline bool startsWith(std::span<const std::uint8_t> bytes, std::span<const std::uint8_t> beginning) {
    return bytes.size() >= beginning.size() && std::ranges::equal(bytes.first(beginning.size()), beginning);
}

/// Index of the first of `count` ascending entries that is not less than `wanted`; count if all are less.
/// @param entryAt  gives the bytes of entry i
template <typename EntryAt>
std::size_t firstNotLess(std::size_t count, std::span<const std::uint8_t> wanted, EntryAt&& entryAt) {
    std::size_t begin = 0;
    for (std::size_t end = count; begin < end;) {
        const std::size_t middle = begin + (end - begin) / 2;
        if (std::is_lt(compareEntries(entryAt(middle), wanted)))
            begin = middle + 1;
        else
            end = middle;
    }
    return begin;
}

class IndexPage {
public:
    /// @param definitionPage  of the table to which the index must belong
    /// @throws RuntimeError (damage) if the page is not a sound index page of that table
    IndexPage(PageView page, PageNumber definitionPage);

    PageNumber number() const { return page_.number; }
    bool isLeaf() const { return isLeaf_; }
    PageNumber previous() const { return previous_; }
    PageNumber next() const { return next_; }
    PageNumber tail() const { return tail_; }

    std::size_t size() const { return starts_.size() - 1; }

    /// Copies key and row pointer of entry i, without the child. The prefix is restored.
    void copyEntry(std::size_t i, base::Bytes& entry) const;
    void appendEntry(std::size_t i, base::Bytes& bytes) const;
    base::Bytes entry(std::size_t i) const;

    PageNumber child(std::size_t i) const;

    /// The children of a node, including the tail.
    std::size_t childCount() const { return size() + (tail_ != 0 ? 1 : 0); }
    PageNumber childAt(std::size_t i) const { return i < size() ? child(i) : tail_; }

    /// Index of the first entry that is not less than `wanted`; size() if all are less. `wanted` is a key or the
    /// beginning of one, with or without row pointer.
    std::size_t lowerBound(std::span<const std::uint8_t> wanted) const;

private:
    /// Bytes of entry i as stored in the page.
    std::span<const std::uint8_t> stored(std::size_t i) const;
    /// Key and row pointer of entry i without the common prefix.
    std::span<const std::uint8_t> suffix(std::size_t i) const;
    std::span<const std::uint8_t> prefix() const;
    void readMask();
    void checkEntries() const;

    PageView page_;
    bool isLeaf_ = true;
    PageNumber previous_ = 0;
    PageNumber next_ = 0;
    PageNumber tail_ = 0;
    std::size_t prefixBytes_ = 0;
    std::vector<std::uint16_t> starts_;  ///< of each entry, counted from offset 480, and the end of the last
};

/// The row to which an entry points: its last four bytes, if the child is left out.
RowPointer rowOfEntry(std::span<const std::uint8_t> entry);

/// Appends the row pointer to a key, which makes it an entry.
void appendRowPointer(base::Bytes& key, RowPointer row);

}  // namespace jet
