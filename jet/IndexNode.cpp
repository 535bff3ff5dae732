#include "jet/IndexNode.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace jet {

IndexNode::IndexNode(const IndexPage& page)
    : previous(page.previous()), next(page.next()), tail(page.tail()), isLeaf_(page.isLeaf()) {
    base::Bytes entry;
    places_.reserve(page.size() + 1);
    for (std::size_t i = 0; i < page.size(); ++i) {
        page.copyEntry(i, entry);
        places_.push_back(keep(entry, isLeaf_ ? 0 : page.child(i)));
    }
}

IndexNode::Place IndexNode::keep(std::span<const std::uint8_t> entry, PageNumber child) {
    const std::size_t offset = bytes_.size();
    bytes_.insert(bytes_.end(), entry.begin(), entry.end());
    return {offset, entry.size(), child};
}

std::size_t IndexNode::lowerBound(std::span<const std::uint8_t> wanted) const {
    const auto found = std::lower_bound(places_.begin(), places_.end(), wanted, [this](const Place& place, auto bytes) {
        const auto own = part(place);
        return std::lexicographical_compare(own.begin(), own.end(), bytes.begin(), bytes.end());
    });
    return static_cast<std::size_t>(found - places_.begin());
}

void IndexNode::insert(std::size_t i, std::span<const std::uint8_t> entry, PageNumber child) {
    places_.insert(places_.begin() + static_cast<std::ptrdiff_t>(i), keep(entry, child));
}

void IndexNode::replaceEntry(std::size_t i, std::span<const std::uint8_t> entry) {
    places_[i] = keep(entry, places_[i].child);
}

/// Bytes of these entries without a prefix.
std::size_t IndexNode::wholeBytes(std::size_t begin, std::size_t end) const {
    std::size_t sum = 0;
    for (std::size_t i = begin; i < end; ++i)
        sum += places_[i].bytes + (isLeaf_ ? 0 : kIndexChildBytes);
    return sum;
}

/// Bytes that these entries take on a page of their own, with the best prefix (see IndexPageBuilder).
std::size_t IndexNode::storedBytes(std::size_t whole, std::size_t begin, std::size_t end) const {
    if (begin == end) return 0;
    const auto first = entry(begin);
    const auto last = entry(end - 1);
    const auto shared = std::mismatch(first.begin(), first.end(), last.begin(), last.end()).first - first.begin();
    const std::size_t prefix = std::min({static_cast<std::size_t>(shared), first.size() - 1, last.size() - 1});
    return whole - (end - begin - 1) * prefix;
}

bool IndexNode::fitsCutAt(std::size_t cut) const {
    return storedBytes(wholeBytes(0, cut), 0, cut) <= kIndexEntriesBytes &&
           storedBytes(wholeBytes(cut, size()), cut, size()) <= kIndexEntriesBytes;
}

std::size_t IndexNode::middle() const {
    assert(size() >= 2);
    const std::size_t fewest = !isLeaf_ && childCount() >= 4 ? 2 : 1;
    const std::size_t end = std::min(size() - 1, childCount() - fewest);
    const std::size_t all = wholeBytes(0, size());
    std::size_t wholeBefore = wholeBytes(0, fewest - 1);
    std::size_t best = fewest;
    std::size_t bestBytes = SIZE_MAX;
    for (std::size_t cut = fewest; cut <= end; ++cut) {
        wholeBefore += wholeBytes(cut - 1, cut);
        const std::size_t before = storedBytes(wholeBefore, 0, cut);
        if (cut > fewest && before > kIndexEntriesBytes) break;
        const std::size_t larger = std::max(before, storedBytes(all - wholeBefore, cut, size()));
        if (larger < bestBytes) {
            best = cut;
            bestBytes = larger;
        }
    }
    return best;
}

IndexNode IndexNode::takeFront(std::size_t count) {
    IndexNode front(isLeaf_);
    for (std::size_t i = 0; i < count; ++i)
        front.insert(i, entry(i), child(i));
    places_.erase(places_.begin(), places_.begin() + static_cast<std::ptrdiff_t>(count));
    return front;
}

void IndexNode::absorb(const IndexNode& before, std::span<const std::uint8_t> upTo) {
    std::vector<Place> joined;
    joined.reserve(before.childCount() + size() + 1);
    for (std::size_t i = 0; i < before.size(); ++i)
        joined.push_back(keep(before.entry(i), before.child(i)));
    if (before.tail != 0) joined.push_back(keep(upTo, before.tail));
    joined.insert(joined.end(), places_.begin(), places_.end());
    places_ = std::move(joined);
    previous = before.previous;
}

void IndexNode::write(std::span<std::uint8_t> page, PageNumber definitionPage, std::uint8_t height) const {
    IndexPageBuilder builder(isLeaf_);
    for (std::size_t i = 0; i < size(); ++i) {
        const bool added = builder.add(entry(i), child(i));
        assert(added);
        static_cast<void>(added);
    }
    builder.write(page, {definitionPage, previous, next, tail, height});
}

}  // namespace jet
