#include "jet/tree/IndexNode.h"

#include <algorithm>
#include <cassert>

#include "base/ByteView.h"

namespace jet {
namespace {

/// The common prefix of the first and the last entry; all entries in between share it, because entries ascend. The last
/// byte of a row pointer never belongs to the prefix.
std::size_t prefixBytes(std::span<const std::uint8_t> first, std::span<const std::uint8_t> last) {
    const std::size_t most = std::min(first.size(), last.size()) - 1;
    return static_cast<std::size_t>(
        std::mismatch(first.begin(), first.begin() + static_cast<std::ptrdiff_t>(most), last.begin()).first -
        first.begin());
}

void putBigEndian(std::span<std::uint8_t> place, std::uint32_t value) {
    for (std::size_t i = 0; i < place.size(); ++i)
        place[i] = static_cast<std::uint8_t>(value >> (8 * (place.size() - 1 - i)));
}

template <typename Value>
auto at(std::vector<Value>& values, std::size_t i) {
    return values.begin() + static_cast<std::ptrdiff_t>(i);
}

}  // namespace

IndexNode::IndexNode(const IndexPage& page)
    : previous(page.previous()), next(page.next()), tail(page.tail()), isLeaf_(page.isLeaf()) {
    bytes_.reserve(kIndexEntriesBytes);
    starts_.reserve(page.size() + 2);
    for (std::size_t i = 0; i < page.size(); ++i) {
        page.appendEntry(i, bytes_);
        starts_.push_back(static_cast<std::uint32_t>(bytes_.size()));
        if (!isLeaf_) children_.push_back(page.child(i));
    }
}

std::size_t IndexNode::lowerBound(std::span<const std::uint8_t> wanted) const {
    return firstNotLess(size(), wanted, [this](std::size_t i) { return entry(i); });
}

void IndexNode::insert(std::size_t i, std::span<const std::uint8_t> entry, PageNumber child) {
    bytes_.insert(at(bytes_, starts_[i]), entry.begin(), entry.end());
    starts_.insert(at(starts_, i), starts_[i]);
    for (std::size_t later = i + 1; later < starts_.size(); ++later)
        starts_[later] += static_cast<std::uint32_t>(entry.size());
    if (!isLeaf_) children_.insert(at(children_, i), child);
}

void IndexNode::erase(std::size_t i) {
    const std::uint32_t bytes = starts_[i + 1] - starts_[i];
    bytes_.erase(at(bytes_, starts_[i]), at(bytes_, starts_[i + 1]));
    starts_.erase(at(starts_, i));
    for (std::size_t later = i; later < starts_.size(); ++later)
        starts_[later] -= bytes;
    if (!isLeaf_) children_.erase(at(children_, i));
}

void IndexNode::replaceEntry(std::size_t i, std::span<const std::uint8_t> entry) {
    const PageNumber child = isLeaf_ ? 0 : children_[i];
    erase(i);
    insert(i, entry, child);
}

bool IndexNode::add(std::span<const std::uint8_t> entry, PageNumber child) {
    assert(size() == 0 || std::is_lt(compareEntries(this->entry(size() - 1), entry)));
    const std::size_t whole = wholeBytes(0, size()) + entry.size() + (isLeaf_ ? 0 : kIndexChildBytes);
    const std::size_t saved = size() == 0 ? 0 : size() * prefixBytes(this->entry(0), entry);
    if (whole - saved > kIndexEntriesBytes) return false;
    insert(size(), entry, child);
    return true;
}

/// Bytes that these entries take without a prefix.
std::size_t IndexNode::wholeBytes(std::size_t begin, std::size_t end) const {
    return starts_[end] - starts_[begin] + (isLeaf_ ? 0 : kIndexChildBytes * (end - begin));
}

/// Bytes that these entries take on a page of their own, with the longest possible prefix.
std::size_t IndexNode::storedBytes(std::size_t begin, std::size_t end) const {
    if (begin == end) return 0;
    return wholeBytes(begin, end) - (end - begin - 1) * prefixBytes(entry(begin), entry(end - 1));
}

std::size_t IndexNode::storedBytesBehind(const IndexNode& before, std::span<const std::uint8_t> upTo) const {
    const std::size_t count = before.childCount() + size();
    if (count == 0) return 0;
    std::size_t whole = before.wholeBytes(0, before.size()) + wholeBytes(0, size());
    if (before.tail != 0) whole += upTo.size() + kIndexChildBytes;
    const auto ownFirst = before.tail != 0 ? upTo : entry(0);
    const auto first = before.size() != 0 ? before.entry(0) : ownFirst;
    const auto lastBefore = before.tail != 0 ? upTo : before.entry(before.size() - 1);
    const auto last = size() != 0 ? entry(size() - 1) : lastBefore;
    return whole - (count - 1) * prefixBytes(first, last);
}

bool IndexNode::fitsCutAt(std::size_t cut) const {
    return storedBytes(0, cut) <= kIndexEntriesBytes && storedBytes(cut, size()) <= kIndexEntriesBytes;
}

std::size_t IndexNode::middle() const {
    assert(size() >= 2);
    const std::size_t fewest = !isLeaf_ && childCount() >= 4 ? 2 : 1;
    const std::size_t end = std::min(size() - 1, childCount() - fewest);
    std::size_t best = fewest;
    std::size_t bestBytes = SIZE_MAX;
    for (std::size_t cut = fewest; cut <= end; ++cut) {
        const std::size_t before = storedBytes(0, cut);
        if (cut > fewest && before > kIndexEntriesBytes) break;
        const std::size_t larger = std::max(before, storedBytes(cut, size()));
        if (larger < bestBytes) {
            best = cut;
            bestBytes = larger;
        }
    }
    return best;
}

IndexNode IndexNode::takeFront(std::size_t count) {
    IndexNode front(isLeaf_);
    const std::uint32_t cut = starts_[count];
    front.bytes_.assign(bytes_.begin(), at(bytes_, cut));
    front.starts_.assign(starts_.begin(), at(starts_, count + 1));
    bytes_.erase(bytes_.begin(), at(bytes_, cut));
    starts_.erase(starts_.begin(), at(starts_, count));
    for (std::uint32_t& start : starts_)
        start -= cut;
    if (isLeaf_) return front;
    front.children_.assign(children_.begin(), at(children_, count));
    children_.erase(children_.begin(), at(children_, count));
    return front;
}

void IndexNode::absorb(const IndexNode& before, std::span<const std::uint8_t> upTo) {
    IndexNode joined = before;
    if (before.tail != 0) joined.insert(before.size(), upTo, before.tail);
    const std::uint32_t shift = joined.starts_.back();
    joined.bytes_.insert(joined.bytes_.end(), bytes_.begin(), bytes_.end());
    joined.children_.insert(joined.children_.end(), children_.begin(), children_.end());
    for (std::size_t i = 1; i < starts_.size(); ++i)
        joined.starts_.push_back(shift + starts_[i]);
    joined.next = next;
    joined.tail = tail;
    *this = std::move(joined);
}

void IndexNode::write(std::span<std::uint8_t> page, PageNumber definitionPage, std::uint8_t height) const {
    assert(fits());
    const std::size_t whole = wholeBytes(0, size());
    // A page with enough room needs no prefix.
    const std::size_t prefix = whole > kIndexEntriesBytes ? prefixBytes(entry(0), entry(size() - 1)) : 0;
    std::ranges::fill(page.first(kIndexEntriesOffset), std::uint8_t{0});
    beginPage(page, isLeaf_ ? PageKind::IndexLeaf : PageKind::IndexNode);
    base::putU32(page, kOwnerOffset, definitionPage);
    base::putU32(page, kIndexPreviousOffset, previous);
    base::putU32(page, kIndexNextOffset, next);
    base::putU32(page, kIndexTailOffset, isLeaf_ ? 0 : tail);
    base::putU16(page, kIndexPrefixOffset, static_cast<std::uint16_t>(prefix));
    page[kIndexHeightOffset] = height;
    const auto entries = page.subspan(kIndexEntriesOffset);
    const bool lieAsHere = isLeaf_ && prefix == 0;
    if (lieAsHere) std::ranges::copy(bytes_, entries.begin());
    std::size_t end = 0;
    for (std::size_t i = 0; i < size(); ++i) {
        const auto own = entry(i).subspan(i == 0 ? 0 : prefix);
        if (!lieAsHere) std::ranges::copy(own, entries.begin() + static_cast<std::ptrdiff_t>(end));
        end += own.size();
        if (!isLeaf_) {
            putBigEndian(entries.subspan(end, kIndexChildBytes), children_[i]);
            end += kIndexChildBytes;
        }
        page[kIndexMaskOffset + end / 8] |= static_cast<std::uint8_t>(1U << (end % 8));
    }
    base::putU16(page, kFreeBytesOffset, static_cast<std::uint16_t>(kIndexEntriesBytes - end));
    std::ranges::fill(entries.subspan(end), std::uint8_t{0});
}

}  // namespace jet
