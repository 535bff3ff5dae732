#include "jet/index/IndexWriter.h"

#include <algorithm>
#include <utility>

#include "jet/Errors.h"
#include "jet/WriteErrors.h"
#include "jet/table/DefinitionCounters.h"
#include "jet/tree/IndexCursor.h"

namespace jet {
namespace {

/// Two neighbours that together take no more than this become one page. It is half a page, so that the next entry does
/// not split the page again, and the next removal does not join it again.
constexpr std::size_t kJoinedBytes = kIndexEntriesBytes / 2;

base::Bytes entryFor(std::span<const std::uint8_t> key, RowPointer row) {
    base::Bytes entry(key.begin(), key.end());
    appendRowPointer(entry, row);
    return entry;
}

bool isEntry(const IndexNode& leaf, std::size_t i, const base::Bytes& entry) {
    return i < leaf.size() && std::ranges::equal(leaf.entry(i), entry);
}

}  // namespace

IndexWriter::IndexWriter(PageStore& store, PageAllocator& allocator, const TableDefinition& table,
                         std::size_t indexNumber)
    : store_(store),
      allocator_(allocator),
      table_(table),
      indexNumber_(indexNumber),
      map_(store, allocator, table.indexes.at(indexNumber).usageMap),
      nodes_(store, table.page) {
    const IndexDefinition& index = table.indexes[indexNumber];
    if (index.usageMap.isNone()) throw damaged(table.page, u"Dem Index '" + index.name + u"' fehlt die Belegungskarte");
}

bool IndexWriter::hasKey(std::span<const std::uint8_t> key) {
    descend(key);
    const IndexNode& leaf = *path_.back().node;
    std::size_t i = leaf.lowerBound(key);
    for (; i < leaf.size() && startsWith(leaf.entry(i), key); ++i) {
        if (leaf.entry(i).size() == key.size() + kIndexRowBytes) return true;
    }
    if (i < leaf.size() || leaf.next == 0) return false;
    // Keys with this beginning may continue in the next leaf.
    IndexCursor cursor(store_, table_.page, table_.indexes[indexNumber_].rootPage);
    for (bool there = cursor.seek(key); there && cursor.keyStartsWith(key); there = cursor.next()) {
        if (cursor.key().size() == key.size()) return true;
    }
    return false;
}

void IndexWriter::insert(std::span<const std::uint8_t> key, RowPointer row, bool hasNull) {
    const IndexDefinition& index = table_.indexes[indexNumber_];
    const base::Bytes entry = entryFor(key, row);
    if (entry.size() > kLongestIndexEntry) throw keyTooLong(index.name);
    const bool isKnown = hasKey(key);
    if (isKnown && index.isUnique() && !hasNull) throw duplicateKey();
    descend(entry);
    Level& leaf = path_.back();
    const std::size_t place = leaf.node->lowerBound(entry);
    if (isEntry(*leaf.node, place, entry))
        throw damagedRow(row, u"Die Zeile steht schon im Index '" + index.name + u"'");
    leaf.node->insert(place, entry);
    leaf.isChanged = true;
    const bool isLast = place + 1 == leaf.node->size();
    if (isLast) lastChanged(path_.size() - 1);
    if (isLast && leaf.node->next == 0)
        settle(Place::Last);
    else
        settle(place == 0 && leaf.node->previous == 0 ? Place::First : Place::Between);
    if (isKnown) return;
    DefinitionCounters counters(store_, table_);
    counters.setDistinctKeys(indexNumber_, counters.distinctKeys(indexNumber_) + 1);
}

void IndexWriter::remove(std::span<const std::uint8_t> key, RowPointer row) {
    const base::Bytes entry = entryFor(key, row);
    descend(entry);
    Level& leaf = path_.back();
    const std::size_t place = leaf.node->lowerBound(entry);
    if (!isEntry(*leaf.node, place, entry)) {
        throw damagedRow(row, u"Die Zeile fehlt im Index '" + table_.indexes[indexNumber_].name + u"'");
    }
    leaf.node->erase(place);
    leaf.isChanged = true;
    if (leaf.node->size() == 0)
        dropEmpty(path_.size() - 1);
    else if (place == leaf.node->size())
        lastChanged(path_.size() - 1);
    for (std::size_t level = path_.size() - 1; level > 0; --level)
        joinSmall(level);
    settle(Place::Between);
    if (path_[0].node->childCount() == 1 && !path_[0].node->isLeaf()) lower();
}

void IndexWriter::removeEntryOf(RowPointer row) {
    IndexCursor cursor(store_, table_.page, table_.indexes[indexNumber_].rootPage);
    for (bool there = cursor.first(); there; there = cursor.next()) {
        if (cursor.row() != row) continue;
        const base::Bytes key(cursor.key().begin(), cursor.key().end());
        remove(key, row);
        return;
    }
    throw damagedRow(row, u"Die Zeile fehlt im Index '" + table_.indexes[indexNumber_].name + u"'");
}

/// Reads the path to the leaf that has the entry or would get it.
void IndexWriter::descend(std::span<const std::uint8_t> entry) {
    path_.clear();
    nodes_.forgetIfMany();
    IndexBounds bounds;
    push(table_.indexes[indexNumber_].rootPage, bounds);
    while (!path_.back().node->isLeaf()) {
        Level& at = path_.back();
        const IndexNode& node = *at.node;
        at.position = std::min(node.lowerBound(entry), std::max<std::size_t>(node.childCount(), 1) - 1);
        bounds.enterChild(node, at.page, path_.size(), at.position);
        push(node.childAt(at.position), bounds);
    }
    for (std::size_t level = 0; level < path_.size(); ++level)
        path_[level].height = static_cast<std::uint8_t>(path_.size() - 1 - level);
}

void IndexWriter::push(PageNumber page, const IndexBounds& bounds) {
    path_.push_back({page, &nodeAt(page, bounds), 0, false, 0});
}

IndexNode& IndexWriter::nodeAt(PageNumber page, const IndexBounds& bounds) {
    IndexNode& node = nodes_.at(page);
    bounds.check(node, page);
    if (isOnPath(page)) throw outsideBounds(page);
    return node;
}

/// After a change of a page's last entry: updates the entry of the node above that repeats it. If the path goes through
/// a node's tail, that node has no such entry.
void IndexWriter::lastChanged(std::size_t level) {
    const auto entry = path_[level].node->entry(path_[level].node->size() - 1);
    const base::Bytes last(entry.begin(), entry.end());
    while (level > 0) {
        Level& parent = path_[--level];
        if (parent.position == parent.node->size()) continue;
        parent.node->replaceEntry(parent.position, last);
        parent.isChanged = true;
        // Only the entry of a subtree's last child is repeated further up.
        if (parent.position + 1 < parent.node->childCount()) return;
    }
}

/// Splits pages that are too large and writes changed pages, from the leaf upwards.
void IndexWriter::settle(Place place) {
    for (std::size_t level = path_.size(); level > 0; --level) {
        if (!path_[level - 1].isChanged) continue;
        if (level == 1 && !path_[0].node->fits()) {
            raise();
            ++level;  // the same node, which has a parent now
        }
        Level& at = path_[level - 1];
        while (!at.node->fits())
            split(level - 1, place);
        at.node->write(store_.change(at.page), table_.page, at.height);
    }
}

/// Moves the contents of the root to a new page. This page is then the only child of the root.
void IndexWriter::raise() {
    if (path_.size() >= kMaxIndexHeight) throw tooManyLevels(path_[0].page);
    const PageNumber rootPage = path_[0].page;
    path_[0].page = allocate();
    nodes_.move(rootPage, path_[0].page);
    IndexNode& root = nodes_.put(rootPage, IndexNode(false));
    root.tail = path_[0].page;
    path_.insert(path_.begin(), {rootPage, &root, 0, true, static_cast<std::uint8_t>(path_[0].height + 1)});
}

/// Cuts a page in two; its parent gets an entry for the first part. The first part goes to a new page, so references to
/// the old page stay right. At the end of all entries it is the other way round: the old page stays, full, and the new
/// page becomes the last one.
void IndexWriter::split(std::size_t level, Place place) {
    Level& at = path_[level];
    Level& parent = path_[level - 1];
    const base::Text& name = table_.indexes[indexNumber_].name;
    if (at.node->size() < 2) throw keyTooLong(name);
    const std::size_t edge = cutAtEdge(level, place);
    const bool isEnd = edge != 0 && place == Place::Last;
    IndexNode front = at.node->takeFront(edge != 0 ? edge : at.node->middle());
    const PageNumber added = allocate();
    const PageNumber frontPage = isEnd ? at.page : added;
    if (isEnd) {
        nodes_.move(at.page, added);
        at.page = added;
    }
    front.previous = at.node->previous;
    front.next = at.page;
    at.node->previous = frontPage;
    if (!isEnd) relink(front.previous, at.page, frontPage, true);
    if (isEnd) relink(at.node->next, frontPage, at.page, false);
    // Entries that this engine writes are never that long.
    if (!front.fits()) throw keyTooLong(name);
    front.write(store_.change(frontPage), table_.page, path_[level].height);
    parent.node->setChildAt(parent.position, at.page);
    parent.node->insert(parent.position, front.entry(front.size() - 1), frontPage);
    nodes_.put(frontPage, std::move(front));
    ++parent.position;
    parent.isChanged = true;
}

/// Where to cut a page on the first or last path. Sorted entries shall leave full pages, so the part at the edge gets
/// as little as possible.
/// @return 0 if the page is not on such a path
std::size_t IndexWriter::cutAtEdge(std::size_t level, Place place) const {
    const IndexNode& node = *path_[level].node;
    const std::size_t fewest = node.isLeaf() ? 1 : 2;
    if (place == Place::Between || node.childCount() < 2 * fewest) return 0;
    for (std::size_t i = 0; i < level; ++i) {
        const Level& above = path_[i];
        if (above.position != (place == Place::First ? 0 : above.node->childCount() - 1)) return 0;
    }
    const std::size_t cut = place == Place::First ? fewest : node.childCount() - fewest;
    return node.fitsCutAt(cut) ? cut : 0;
}

/// Removes a page without children or entries from the tree, and then parents that become empty.
void IndexWriter::dropEmpty(std::size_t level) {
    if (level == 0) {
        // An empty tree is one empty leaf.
        const PageNumber root = path_[0].page;
        path_ = {{root, &nodes_.put(root, IndexNode(true)), 0, true, 0}};
        return;
    }
    const Level& at = path_[level];
    const PageNumber previous = at.node->previous;
    const PageNumber next = at.node->next;
    relink(previous, at.page, next, true);
    relink(next, at.page, previous, false);
    release(at.page);
    path_.pop_back();
    Level& parent = path_.back();
    parent.isChanged = true;
    if (parent.position < parent.node->size()) {
        const bool wasLast = parent.position + 1 == parent.node->childCount();
        parent.node->erase(parent.position);
        if (parent.node->childCount() == 0)
            dropEmpty(level - 1);
        else if (wasLast)
            lastChanged(level - 1);
        return;
    }
    if (parent.node->size() == 0) return dropEmpty(level - 1);
    // The last entry's child becomes the tail. Its entry goes up as the last entry of the subtree.
    const std::size_t last = parent.node->size() - 1;
    parent.position = last;
    lastChanged(level - 1);
    parent.node->tail = parent.node->child(last);
    parent.node->erase(last);
}

/// Joins a small page with a neighbour under the same parent. A node with one child is joined even if the result does
/// not fit on a page; the split that follows gives each part several children.
void IndexWriter::joinSmall(std::size_t level) {
    const IndexNode& node = *path_[level].node;
    const Level& parent = path_[level - 1];
    const bool isLone = !node.isLeaf() && node.childCount() == 1;
    if (!isLone && node.storedBytes() > kJoinedBytes) return;
    if (parent.position > 0 && join(level, true)) return;
    if (parent.position + 1 < parent.node->childCount()) join(level, false);
}

/// The second of two neighbours takes over the contents of the first, whose page is freed.
/// @return false, and nothing changed, if together they are too large
bool IndexWriter::join(std::size_t level, bool withPrevious) {
    Level& at = path_[level];
    Level& parent = path_[level - 1];
    const bool isLone = !at.node->isLeaf() && at.node->childCount() == 1;
    const std::size_t front = withPrevious ? parent.position - 1 : parent.position;
    const PageNumber frontPage = parent.node->childAt(front);
    const PageNumber backPage = parent.node->childAt(front + 1);
    base::Bytes between;
    parent.node->copyEntry(front, between);
    const IndexNode& before = withPrevious ? nodeAt(frontPage, {{}, between}) : *at.node;
    IndexNode& joined = withPrevious ? *at.node : nodeAt(backPage, {between, {}});
    if (before.isLeaf() != joined.isLeaf()) {
        throw damaged(withPrevious ? frontPage : backPage,
                      u"Die Indexseite liegt auf einer anderen Ebene als ihre Nachbarin");
    }
    const bool hasTailAndEntries = before.tail != 0 && before.size() != 0;
    if (hasTailAndEntries && std::is_gteq(compareEntries(before.entry(before.size() - 1), between)))
        throw outsideBounds(frontPage);
    const auto names = [&](PageNumber link, PageNumber page) {
        return link == page || (link == 0 && !joined.isLeaf());
    };
    if (!names(before.next, backPage) || !names(joined.previous, frontPage)) {
        throw damaged(frontPage, u"Die Verkettung der Indexseiten nennt nicht Seite " + base::decimal(backPage));
    }
    if (!isLone && joined.storedBytesBehind(before, between) > kJoinedBytes) return false;
    if (withPrevious) at.position += before.childCount();
    at.page = backPage;
    at.node = &joined;
    at.isChanged = true;
    joined.absorb(before, between);
    parent.node->erase(front);
    parent.position = front;
    parent.isChanged = true;
    relink(joined.previous, frontPage, backPage, true);
    release(frontPage);
    return true;
}

/// A root with only one child takes over its contents.
void IndexWriter::lower() {
    const PageNumber rootPage = table_.indexes[indexNumber_].rootPage;
    for (std::size_t i = 0; i < kMaxIndexHeight; ++i) {
        const IndexNode& root = nodes_.at(rootPage);
        if (root.isLeaf() || root.childCount() != 1) return;
        const PageNumber child = root.childAt(0);
        if (child == rootPage) throw damaged(rootPage, u"Ein Knoten des Indexes ist sein eigenes Kind");
        const IndexNode& only = nodes_.at(child);
        if (only.previous != 0 || only.next != 0)
            throw damaged(child, u"Die einzige Seite einer Ebene des Indexes hat Nachbarinnen");
        const PageView view = store_.page(child);
        const base::Bytes bytes(view.bytes.bytes().begin(), view.bytes.bytes().end());
        std::ranges::copy(bytes, store_.change(rootPage).begin());
        nodes_.move(child, rootPage);
        release(child);
    }
}

/// Changes a link of a neighbour to another page.
/// @param page  the neighbour, or 0
/// @param isNext  true: the forward link, false: the backward link
void IndexWriter::relink(PageNumber page, PageNumber from, PageNumber to, bool isNext) {
    if (page == 0) return;
    IndexNode& neighbour = nodes_.at(page);
    PageNumber& link = isNext ? neighbour.next : neighbour.previous;
    if (isOnPath(page) || link != from)
        throw damaged(page, u"Die Verkettung der Indexseiten nennt nicht Seite " + base::decimal(from));
    link = to;
    base::putU32(store_.change(page), isNext ? kIndexNextOffset : kIndexPreviousOffset, to);
}

bool IndexWriter::isOnPath(PageNumber page) const {
    return std::ranges::any_of(path_, [&](const Level& level) { return level.page == page; });
}

PageNumber IndexWriter::allocate() {
    const PageNumber page = allocator_.allocate();
    if (map_.contains(page) || isOnPath(page)) throw damaged(page, u"Eine Seite des Indexes ist als frei verzeichnet");
    map_.set(page);
    return page;
}

void IndexWriter::release(PageNumber page) {
    if (!map_.contains(page)) throw damaged(page, u"Die Indexseite fehlt in der Belegungskarte ihres Indexes");
    nodes_.drop(page);
    map_.clear(page);
    allocator_.free(page);
}

}  // namespace jet
