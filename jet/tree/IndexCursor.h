#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "base/Value.h"
#include "jet/tree/IndexBounds.h"
#include "jet/tree/IndexPage.h"

namespace jet {

/// Walks through the entries of an index in order, forwards or backwards. The tree may have any height.
///
/// The cursor goes down through the nodes, and also finds the next leaf through the nodes. The links of the leaves must
/// name the same leaf. So no leaf can be skipped unnoticed. The entries of each page must also keep to the bounds that
/// its parent sets. So the entries ascend over the whole walk, and no page comes twice. Any contradiction is damage: a
/// RuntimeError that names the page.
///
///     for (cursor.seek(key); cursor.isAtEntry() && cursor.keyStartsWith(key); cursor.next()) use(cursor.row());
class IndexCursor {
public:
    /// @param source          must outlive the cursor
    /// @param definitionPage  of the table; each page of the tree names it
    IndexCursor(PageSource& source, PageNumber definitionPage, PageNumber rootPage)
        : source_(source), definitionPage_(definitionPage), rootPage_(rootPage) {}

    bool isAtEntry() const { return isAtEntry_; }

    /// Each move reads O(height) pages. @return isAtEntry()
    bool first();
    bool last();

    /// Goes to the first entry that is not less than the key. `key` may be the beginning of a longer key.
    bool seek(std::span<const std::uint8_t> key);

    bool next();
    bool previous();

    /// The key of the present entry, without the row pointer.
    std::span<const std::uint8_t> key() const;
    bool keyStartsWith(std::span<const std::uint8_t> beginning) const;
    RowPointer row() const { return rowOfEntry(entry_); }

    /// The page of the present leaf, for error messages.
    PageNumber leafPage() const { return leaf().page.number(); }

private:
    /// One page of the path from the root to the current leaf.
    struct Level {
        IndexPage page;
        std::size_t position = 0;  ///< node: of the child that is next on the path; leaf: of the entry
        IndexBounds bounds;
    };
    enum class Edge { First, Last };

    Level& leaf() { return path_.back(); }
    const Level& leaf() const { return path_.back(); }

    void start();
    void descend();
    void descendAlong(Edge edge);
    bool toNeighbour(Edge arriveAt);
    bool arrive();
    void checkNoNeighbour(PageNumber neighbour) const;

    PageSource& source_;
    PageNumber definitionPage_;
    PageNumber rootPage_;
    std::vector<Level> path_;
    base::Bytes entry_;
    PageNumber emptyLeaves_ = 0;
    bool isAtEntry_ = false;
};

}  // namespace jet
