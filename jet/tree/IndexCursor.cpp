#include "jet/tree/IndexCursor.h"

#include <algorithm>
#include <cassert>

#include "jet/Errors.h"

namespace jet {

void IndexCursor::start() {
    path_.clear();
    isAtEntry_ = false;
    emptyLeaves_ = 0;
    path_.push_back(Level{IndexPage(source_.page(rootPage_), definitionPage_), 0, {}});
}

/// Goes to the child at the present position of the lowest node.
void IndexCursor::descend() {
    const Level& parent = path_.back();
    const IndexPage& node = parent.page;
    IndexBounds bounds = parent.bounds;
    bounds.enterChild(node, node.number(), path_.size(), parent.position);
    IndexPage child(source_.page(node.childAt(parent.position)), definitionPage_);
    bounds.check(child, child.number());
    path_.push_back({std::move(child), 0, std::move(bounds)});
}

void IndexCursor::descendAlong(Edge edge) {
    while (!leaf().page.isLeaf()) {
        Level& node = path_.back();
        node.position = edge == Edge::First ? 0 : std::max<std::size_t>(node.page.childCount(), 1) - 1;
        descend();
    }
    Level& reached = leaf();
    reached.position = edge == Edge::First ? 0 : std::max<std::size_t>(reached.page.size(), 1) - 1;
}

bool IndexCursor::first() {
    start();
    descendAlong(Edge::First);
    checkNoNeighbour(leaf().page.previous());
    return arrive() || next();
}

bool IndexCursor::last() {
    start();
    descendAlong(Edge::Last);
    checkNoNeighbour(leaf().page.next());
    return arrive() || previous();
}

bool IndexCursor::seek(std::span<const std::uint8_t> key) {
    start();
    while (!leaf().page.isLeaf()) {
        Level& node = path_.back();
        node.position = std::min(node.page.lowerBound(key), std::max<std::size_t>(node.page.childCount(), 1) - 1);
        descend();
    }
    leaf().position = leaf().page.lowerBound(key);
    // A leaf may end before the entry that its node names for it. Then the wanted place is in the next leaf.
    return arrive() || next();
}

/// Reads the entry at the leaf's position, if any.
bool IndexCursor::arrive() {
    const Level& at = leaf();
    isAtEntry_ = at.position < at.page.size();
    if (isAtEntry_) at.page.copyEntry(at.position, entry_);
    return isAtEntry_;
}

bool IndexCursor::next() {
    if (path_.empty()) return false;
    if (leaf().position + 1 < leaf().page.size()) {
        ++leaf().position;
        return arrive();
    }
    while (toNeighbour(Edge::First)) {
        if (arrive()) return true;
    }
    return false;
}

bool IndexCursor::previous() {
    if (path_.empty()) return false;
    if (leaf().position > 0) {
        --leaf().position;
        return arrive();
    }
    while (toNeighbour(Edge::Last)) {
        if (arrive()) return true;
    }
    return false;
}

/// Goes to the next leaf (to its first entry) or to the previous one (to its last entry).
/// @return false, and no position is left, if there is no such leaf
bool IndexCursor::toNeighbour(Edge arriveAt) {
    const bool forwards = arriveAt == Edge::First;
    const PageNumber from = leafPage();
    const PageNumber link = forwards ? leaf().page.next() : leaf().page.previous();
    std::size_t depth = path_.size() - 1;
    while (depth > 0) {
        Level& node = path_[depth - 1];
        if (forwards ? node.position + 1 < node.page.childCount() : node.position > 0) break;
        --depth;
    }
    if (depth == 0) {
        checkNoNeighbour(link);
        path_.clear();
        isAtEntry_ = false;
        return false;
    }
    path_.erase(path_.begin() + static_cast<std::ptrdiff_t>(depth), path_.end());
    Level& node = path_.back();
    node.position = forwards ? node.position + 1 : node.position - 1;
    descend();
    descendAlong(arriveAt);
    const IndexPage& reached = leaf().page;
    if (link != reached.number() || (forwards ? reached.previous() : reached.next()) != from) {
        throw damaged(from, u"Die Verkettung der Indexseiten nennt Seite " + base::decimal(link) +
                                u", der Knoten Seite " + base::decimal(reached.number()));
    }
    if (reached.size() == 0 && ++emptyLeaves_ > source_.pageCount()) {
        throw damaged(reached.number(), u"Die Indexseiten bilden einen Kreis");
    }
    return true;
}

void IndexCursor::checkNoNeighbour(PageNumber neighbour) const {
    if (neighbour == 0) return;
    throw damaged(leafPage(), u"Die äußerste Indexseite hat Seite " + base::decimal(neighbour) + u" zur Nachbarin");
}

std::span<const std::uint8_t> IndexCursor::key() const {
    assert(isAtEntry_);
    return std::span(entry_).first(entry_.size() - kIndexRowBytes);
}

bool IndexCursor::keyStartsWith(std::span<const std::uint8_t> beginning) const {
    return startsWith(key(), beginning);
}

}  // namespace jet
