#pragma once

#include <span>
#include <vector>

#include "base/Value.h"
#include "jet/page/PageStore.h"
#include "jet/space/PageAllocator.h"
#include "jet/space/UsageMapWriter.h"
#include "jet/table/TableDefinition.h"
#include "jet/tree/IndexNodes.h"

namespace jet {

/// Changes an index tree of any height, entry by entry.
///
/// Laws, kept by each change:
/// - An entry of a node is the last leaf entry under its child.
/// - The root keeps its page. The tree becomes higher when the root is full, and lower when it has only one child left.
/// - Leaves are linked with their neighbours over the whole index, and so are the nodes of each level, unless the file
///   came without: a link of a node may be 0. No leaf or node but the root is empty.
/// - The index's map holds the pages of the tree and no others; what leaves the tree is free.
///
/// Entries that come in their order, ascending or descending, leave full pages behind; what comes in any other order
/// cuts full pages in the middle. A page that a removal leaves small joins a neighbour under the same parent where half
/// a page takes both.
///
/// A node that comes to be has a tail only on the rightmost path. Nodes of other writers may have tails elsewhere, or
/// none: both are understood, and stay as they are.
class IndexWriter {
public:
    /// @param indexNumber  position in table.indexes
    /// All arguments must outlive the writer; as long as it is used, nobody else changes the tree.
    /// @throws RuntimeError (damage) if the index has no sound map
    IndexWriter(PageStore& store, PageAllocator& allocator, const TableDefinition& table, std::size_t indexNumber);

    /// Whether any row has exactly this key.
    bool hasKey(std::span<const std::uint8_t> key);

    /// Adds an entry, and counts it in the definition if its key is new.
    /// @param hasNull  whether a part of the key is null: such keys may be equal in a unique index
    /// @throws RuntimeError if the key is too long, or there in a unique index; damage if the entry is there already
    void insert(std::span<const std::uint8_t> key, RowPointer row, bool hasNull = false);

    /// @throws RuntimeError (damage) if there is no such entry
    void remove(std::span<const std::uint8_t> key, RowPointer row);

    /// Removes the entry of a row whose key cannot be made again (see keyOfRowIsCertain), by going through all entries.
    /// @throws RuntimeError (damage) if there is none
    void removeEntryOf(RowPointer row);

private:
    struct Level {
        PageNumber page;
        IndexNode* node;       ///< one of nodes_
        std::size_t position;  ///< node: of the child on the path
        bool isChanged;
        std::uint8_t height;  ///< above the leaves
    };

    /// Where an entry came among all others: it decides where a full page is cut.
    enum class Place { First, Between, Last };

    void descend(std::span<const std::uint8_t> entry);
    void push(PageNumber page, std::span<const std::uint8_t> after, std::span<const std::uint8_t> upTo);
    IndexNode& nodeAt(PageNumber page, std::span<const std::uint8_t> after, std::span<const std::uint8_t> upTo);
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
    IndexNodes nodes_;
    std::vector<Level> path_;  ///< from the root to a leaf, during a change
};

}  // namespace jet
