#include "jet/IndexWriter.h"

#include <algorithm>

#include "jet/DefinitionCounters.h"
#include "jet/Errors.h"
#include "jet/IndexCursor.h"
#include "jet/WriteErrors.h"

namespace jet {
namespace {

/// As for reading: more levels than any file can have.
constexpr std::size_t kMaxHeight = 16;
constexpr std::size_t kPreviousOffset = 12;
constexpr std::size_t kNextOffset = 16;

bool isLess(std::span<const std::uint8_t> a, std::span<const std::uint8_t> b) {
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end());
}

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
      map_(store, allocator, table.indexes.at(indexNumber).usageMap) {}

bool IndexWriter::hasKey(std::span<const std::uint8_t> key) const {
    IndexCursor cursor(store_, table_, table_.indexes[indexNumber_]);
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
    const std::size_t place = leaf.node.lowerBound(entry);
    if (isEntry(leaf.node, place, entry))
        throw damagedRow(row, u"Die Zeile steht schon im Index '" + index.name + u"'");
    leaf.node.insert(place, entry);
    leaf.isChanged = true;
    const bool isLast = place + 1 == leaf.node.size();
    if (isLast) lastChanged(path_.size() - 1);
    settle(isLast && leaf.node.next == 0);
    if (isKnown) return;
    DefinitionCounters counters(store_, table_);
    counters.setDistinctKeys(indexNumber_, counters.distinctKeys(indexNumber_) + 1);
}

void IndexWriter::remove(std::span<const std::uint8_t> key, RowPointer row) {
    const base::Bytes entry = entryFor(key, row);
    descend(entry);
    Level& leaf = path_.back();
    const std::size_t place = leaf.node.lowerBound(entry);
    if (!isEntry(leaf.node, place, entry)) {
        throw damagedRow(row, u"Die Zeile fehlt im Index '" + table_.indexes[indexNumber_].name + u"'");
    }
    leaf.node.erase(place);
    leaf.isChanged = true;
    if (leaf.node.size() == 0)
        dropEmpty(path_.size() - 1);
    else if (place == leaf.node.size())
        lastChanged(path_.size() - 1);
    settle(false);
    lower();
}

void IndexWriter::removeEntryOf(RowPointer row) {
    IndexCursor cursor(store_, table_, table_.indexes[indexNumber_]);
    for (bool there = cursor.first(); there; there = cursor.next()) {
        if (cursor.row() != row) continue;
        const base::Bytes key(cursor.key().begin(), cursor.key().end());
        remove(key, row);
        return;
    }
    throw damagedRow(row, u"Die Zeile fehlt im Index '" + table_.indexes[indexNumber_].name + u"'");
}

/// Reads the path to the leaf where the entry is or would be.
void IndexWriter::descend(std::span<const std::uint8_t> entry) {
    path_.clear();
    base::Bytes after;
    base::Bytes upTo;
    push(table_.indexes[indexNumber_].rootPage, after, upTo);
    while (!path_.back().node.isLeaf()) {
        Level& at = path_.back();
        const IndexNode& node = at.node;
        if (node.childCount() == 0) throw damaged(at.page, u"Ein Knoten des Indexes ist leer");
        if (path_.size() >= kMaxHeight) throw damaged(at.page, u"Der Index hat zu viele Ebenen");
        at.position = std::min(node.lowerBound(entry), node.childCount() - 1);
        if (at.position > 0) after.assign(node.entry(at.position - 1).begin(), node.entry(at.position - 1).end());
        if (at.position + 1 < node.childCount()) {
            upTo.assign(node.entry(at.position).begin(), node.entry(at.position).end());
        }
        push(node.childAt(at.position), after, upTo);
    }
    for (std::size_t level = 0; level < path_.size(); ++level)
        path_[level].height = static_cast<std::uint8_t>(path_.size() - 1 - level);
}

/// @param after, upTo  bounds of the page's entries; empty for none
void IndexWriter::push(PageNumber page, std::span<const std::uint8_t> after, std::span<const std::uint8_t> upTo) {
    IndexNode node(IndexPage(store_.page(page), table_.page));
    const bool isOutside = node.size() != 0 && ((!after.empty() && !isLess(after, node.entry(0))) ||
                                                (!upTo.empty() && isLess(upTo, node.entry(node.size() - 1))));
    const bool isTwice = std::ranges::any_of(path_, [&](const Level& level) { return level.page == page; });
    if (isOutside || isTwice) {
        throw damaged(page, u"Die Einträge der Indexseite liegen außerhalb der Grenzen, die ihr Knoten setzt");
    }
    path_.push_back({page, std::move(node), 0, false, 0});
}

/// The last entry of a page has changed: the node above whose entry tells of it is changed too. Nodes in which the path
/// goes through the tail have no such entry.
void IndexWriter::lastChanged(std::size_t level) {
    const auto entry = path_[level].node.entry(path_[level].node.size() - 1);
    const base::Bytes last(entry.begin(), entry.end());
    while (level > 0) {
        Level& parent = path_[--level];
        if (parent.position == parent.node.size()) continue;
        parent.node.replaceEntry(parent.position, last);
        parent.isChanged = true;
        // Of what lies above, only the entry of a subtree's last child tells.
        if (parent.position + 1 < parent.node.childCount()) return;
    }
}

/// Splits what has become too large and writes what has changed, from the leaf upwards.
/// @param isAppended  the last entry of all has been added
void IndexWriter::settle(bool isAppended) {
    for (std::size_t level = path_.size(); level > 0; --level) {
        if (!path_[level - 1].isChanged) continue;
        if (level == 1 && !path_[0].node.fits()) {
            raise();
            ++level;  // the same node, with a parent now
        }
        Level& at = path_[level - 1];
        while (!at.node.fits())
            split(level - 1, isAppended);
        at.node.write(store_.change(at.page), table_.page, at.height);
    }
}

/// Moves the root's contents to a new page, the only child of the root then.
void IndexWriter::raise() {
    if (path_.size() >= kMaxHeight) throw damaged(path_[0].page, u"Der Index hat zu viele Ebenen");
    Level root{path_[0].page, IndexNode(false), 0, true, static_cast<std::uint8_t>(path_[0].height + 1)};
    path_[0].page = allocate();
    root.node.tail = path_[0].page;
    path_.insert(path_.begin(), std::move(root));
}

/// Cuts a page in two; its parent gets an entry for the first part. The first part goes to a new page and what refers
/// to the page stays right, except at the end of all entries: there the page stays, full, and the new page is the end.
void IndexWriter::split(std::size_t level, bool isAppended) {
    Level& at = path_[level];
    Level& parent = path_[level - 1];
    const base::Text& name = table_.indexes[indexNumber_].name;
    if (at.node.size() < 2) throw keyTooLong(name);
    const bool isEnd = isAppended && isRightmost(level);
    IndexNode front = at.node.takeFront(isEnd ? at.node.size() - 1 : at.node.middle());
    const PageNumber added = allocate();
    const PageNumber frontPage = isEnd ? at.page : added;
    if (isEnd) at.page = added;
    if (at.node.isLeaf() || at.node.previous != 0 || at.node.next != 0) {
        front.previous = at.node.previous;
        front.next = at.page;
        at.node.previous = frontPage;
        if (!isEnd) relink(front.previous, at.page, frontPage, true);
        if (isEnd) relink(at.node.next, frontPage, at.page, false);
    }
    // Entries of our own are never so long.
    if (!front.fits()) throw keyTooLong(name);
    front.write(store_.change(frontPage), table_.page, path_[level].height);
    parent.node.setChildAt(parent.position, at.page);
    parent.node.insert(parent.position, front.entry(front.size() - 1), frontPage);
    ++parent.position;
    parent.isChanged = true;
}

/// Takes a page without children or entries out of the tree; parents that become empty too follow it.
void IndexWriter::dropEmpty(std::size_t level) {
    if (level == 0) {
        // An empty tree is an empty leaf.
        path_ = {{path_[0].page, IndexNode(true), 0, true, 0}};
        return;
    }
    const Level& at = path_[level];
    const PageNumber previous = at.node.previous;
    const PageNumber next = at.node.next;
    relink(previous, at.page, next, true);
    relink(next, at.page, previous, false);
    release(at.page);
    path_.pop_back();
    Level& parent = path_.back();
    parent.isChanged = true;
    if (parent.position < parent.node.size()) {
        const bool wasLast = parent.position + 1 == parent.node.childCount();
        parent.node.erase(parent.position);
        if (parent.node.childCount() == 0)
            dropEmpty(level - 1);
        else if (wasLast)
            lastChanged(level - 1);
        return;
    }
    if (parent.node.size() == 0) {
        parent.node.tail = 0;
        dropEmpty(level - 1);
        return;
    }
    // The last entry's child becomes the tail; its entry goes up as the last one of the subtree.
    const std::size_t last = parent.node.size() - 1;
    parent.position = last;
    lastChanged(level - 1);
    parent.node.tail = parent.node.child(last);
    parent.node.erase(last);
}

/// A root with one child takes over its contents.
void IndexWriter::lower() {
    const PageNumber rootPage = table_.indexes[indexNumber_].rootPage;
    for (std::size_t i = 0; i < kMaxHeight; ++i) {
        const IndexNode root(IndexPage(store_.page(rootPage), table_.page));
        if (root.isLeaf() || root.childCount() != 1) return;
        const PageNumber child = root.childAt(0);
        if (child == rootPage) throw damaged(rootPage, u"Ein Knoten des Indexes ist sein eigenes Kind");
        const IndexPage only(store_.page(child), table_.page);
        if (only.previous() != 0 || only.next() != 0) {
            throw damaged(child, u"Die einzige Seite einer Ebene des Indexes hat Nachbarinnen");
        }
        const PageView view = store_.page(child);
        const base::Bytes bytes(view.bytes.bytes().begin(), view.bytes.bytes().end());
        std::ranges::copy(bytes, store_.change(rootPage).begin());
        release(child);
    }
}

bool IndexWriter::isRightmost(std::size_t level) const {
    return std::all_of(path_.begin(), path_.begin() + static_cast<std::ptrdiff_t>(level),
                       [](const Level& above) { return above.position + 1 == above.node.childCount(); });
}

/// Lets the link of a neighbour point to another page.
/// @param page  the neighbour, or 0
/// @param isNext  its link forwards, else the one backwards
void IndexWriter::relink(PageNumber page, PageNumber from, PageNumber to, bool isNext) {
    if (page == 0) return;
    const IndexPage neighbour(store_.page(page), table_.page);
    const bool isOnPath = std::ranges::any_of(path_, [&](const Level& level) { return level.page == page; });
    if (isOnPath || (isNext ? neighbour.next() : neighbour.previous()) != from) {
        throw damaged(page, u"Die Verkettung der Indexseiten nennt nicht Seite " + base::decimal(from));
    }
    base::putU32(store_.change(page), isNext ? kNextOffset : kPreviousOffset, to);
}

PageNumber IndexWriter::allocate() {
    const PageNumber page = allocator_.allocate();
    map_.set(page);
    return page;
}

void IndexWriter::release(PageNumber page) {
    if (!map_.contains(page)) throw damaged(page, u"Die Indexseite fehlt in der Belegungskarte ihres Indexes");
    map_.clear(page);
    allocator_.free(page);
}

}  // namespace jet
