#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "base/Value.h"
#include "jet/tree/IndexPage.h"

namespace jet {

/// Walks over the entries of an index in their order, forwards or backwards, in a tree of any height.
///
/// It goes down through the nodes, and from leaf to leaf by way of the nodes too; the leaves' own links must
/// say the same. So no leaf can be missing from the walk unnoticed. Each page must also keep to the bounds
/// that its parent's entries set, hence entries ascend over the whole walk and no page comes twice. Whatever
/// contradicts is damage: a RuntimeError that names the page.
///
///     for (cursor.seek(key); cursor.isAtEntry() && cursor.keyStartsWith(key); cursor.next()) use(cursor.row());
class IndexCursor {
public:
    /// @param source          must outlive the cursor
    /// @param definitionPage  of the table, which each page of the tree names
    IndexCursor(PageSource& source, PageNumber definitionPage, PageNumber rootPage)
        : source_(source), definitionPage_(definitionPage), rootPage_(rootPage) {}

    bool isAtEntry() const { return isAtEntry_; }

    /// Each move reads O(height) pages. @return isAtEntry()
    bool first();
    bool last();

    /// To the first entry that is not less than the key, which may be the beginning of one.
    bool seek(std::span<const std::uint8_t> key);

    bool next();
    bool previous();

    /// Of the present entry, without the row pointer.
    std::span<const std::uint8_t> key() const;
    bool keyStartsWith(std::span<const std::uint8_t> beginning) const;
    RowPointer row() const { return rowOfEntry(entry_); }

    /// Page of the present leaf, for error messages.
    PageNumber leafPage() const { return leaf().page.number(); }

private:
    /// A page of the path from the root to the present leaf, with the bounds of its entries.
    struct Level {
        IndexPage page;
        std::size_t position = 0;  ///< node: of the child that is next on the path; leaf: of the entry
        base::Bytes after;         ///< entries are greater; empty for no bound
        base::Bytes upTo;          ///< entries are not greater; empty for no bound
    };
    enum class Edge { First, Last };

    static std::size_t childCount(const IndexPage& node) { return node.size() + (node.tail() != 0 ? 1 : 0); }
    static PageNumber childAt(const IndexPage& node, std::size_t i) {
        return i < node.size() ? node.child(i) : node.tail();
    }

    Level& leaf() { return path_.back(); }
    const Level& leaf() const { return path_.back(); }

    void start();
    void descend();
    void descendAlong(Edge edge);
    void checkBounds(const Level& level) const;
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
