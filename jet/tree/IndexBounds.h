#pragma once

#include <cstddef>
#include <span>

#include "base/RuntimeError.h"
#include "base/Value.h"
#include "jet/RowPointer.h"

namespace jet {

/// The bounds that the nodes above a page set for its entries. All code that descends a tree checks them, so that
/// no entry is missed unnoticed. The templates take an IndexPage or an IndexNode.
struct IndexBounds {
    base::Bytes after;  ///< all entries are greater than this; empty for no bound
    base::Bytes upTo;   ///< no entry is greater than this; empty for no bound

    /// Narrows the bounds of a node to those of its child i.
    /// @param depth  of the node; that of the root is 1
    /// @throws RuntimeError (damage) if the node has no children, or the tree too many levels
    template <typename Node>
    void enterChild(const Node& node, PageNumber page, std::size_t depth, std::size_t i) {
        requireChildren(page, depth, node.childCount());
        if (i > 0) node.copyEntry(i - 1, after);
        // In a node without tail, the last child also takes everything greater than the last entry.
        if (i + 1 < node.childCount()) node.copyEntry(i, upTo);
    }

    /// @throws RuntimeError (damage) if an entry is outside
    template <typename Node>
    void check(const Node& node, PageNumber page) const {
        if (node.size() != 0) check(node.entry(0), node.entry(node.size() - 1), page);
    }

private:
    static void requireChildren(PageNumber page, std::size_t depth, std::size_t childCount);
    void check(std::span<const std::uint8_t> first, std::span<const std::uint8_t> last, PageNumber page) const;
};

/// The error for a page with entries outside its bounds.
base::RuntimeError outsideBounds(PageNumber page);

base::RuntimeError tooManyLevels(PageNumber page);

}  // namespace jet
