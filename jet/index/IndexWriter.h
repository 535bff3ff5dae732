#pragma once

#include <span>
#include <vector>

#include "base/Value.h"
#include "jet/page/PageStore.h"
#include "jet/space/PageAllocator.h"
#include "jet/space/UsageMapWriter.h"
#include "jet/table/TableDefinition.h"
#include "jet/tree/IndexBounds.h"
#include "jet/tree/IndexNodeCache.h"

namespace jet {

/// Changes an index tree of any height, one entry at a time.
///
/// Rules that every change keeps:
/// - An entry of a node is the last leaf entry under its child.
/// - The root keeps its page. The tree becomes higher when the root is full, and lower when it has only one child left.
/// - Leaves are linked with their neighbours over the whole index. So are the nodes of each level, unless the file came
///   without these links: a link of a node may be 0. No page but the root is empty.
/// - The map of the index holds exactly the pages of the tree. A page that leaves the tree is freed.
///
/// Sorted entries, ascending or descending, leave full pages. Entries in any other order cut full pages in the middle.
/// When a removal makes a page small, the page joins a neighbour under the same parent if both fit into half a page.
///
/// A new node has a tail only on the rightmost path. Nodes of other writers may have tails elsewhere, or none. Both are
/// understood, and stay as they are.
class IndexWriter {
public:
    /// @param indexNumber  position in table.indexes
    /// All arguments must outlive the writer. While it is used, no other code may change the tree.
    /// @throws RuntimeError (damage) if the map of the index is not sound
    IndexWriter(PageStore& store, PageAllocator& allocator, const TableDefinition& table, std::size_t indexNumber);

    /// Whether any row has exactly this key.
    bool hasKey(std::span<const std::uint8_t> key);

    /// Adds an entry. If its key is new, increases the number of distinct keys in the definition.
    /// @param hasNull  whether a part of the key is null. Such keys may be equal in a unique index.
    /// @throws RuntimeError if the key is too long, or exists in a unique index; (damage) if the entry exists already
    void insert(std::span<const std::uint8_t> key, RowPointer row, bool hasNull = false);

    /// @throws RuntimeError (damage) if there is no such entry
    void remove(std::span<const std::uint8_t> key, RowPointer row);

    /// Removes the entry of a row whose key cannot be made again (see keyOfRowIsCertain). Goes through all entries.
    /// @throws RuntimeError (damage) if the row has no entry
    void removeEntryOf(RowPointer row);

private:
    struct Level {
        PageNumber page;
        IndexNode* node;       ///< one of nodes_
        std::size_t position;  ///< node: of the child on the path
        bool isChanged;
        std::uint8_t height;  ///< above the leaves
    };

    /// Where an entry was added among all others. This decides where a full page is cut.
    enum class Place { First, Between, Last };

    void descend(std::span<const std::uint8_t> entry);
    void push(PageNumber page, const IndexBounds& bounds);
    IndexNode& nodeAt(PageNumber page, const IndexBounds& bounds);
    void settle(Place place);
    void lastChanged(std::size_t level);
    void split(std::size_t level, Place place);
    std::size_t cutAtEdge(std::size_t level, Place place) const;
    void raise();
    void dropEmpty(std::size_t level);
    void joinSmall(std::size_t level);
    bool join(std::size_t level, bool withPrevious);
    void lower();
    void relink(PageNumber page, PageNumber from, PageNumber to, bool isNext);
    bool isOnPath(PageNumber page) const;
    PageNumber allocate();
    void release(PageNumber page);

    PageStore& store_;
    PageAllocator& allocator_;
    const TableDefinition& table_;
    std::size_t indexNumber_;
    UsageMapWriter map_;
    IndexNodeCache nodes_;
    std::vector<Level> path_;  ///< from the root to a leaf, during a change
};

}  // namespace jet
