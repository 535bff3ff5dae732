#include "jet/IndexTreeBuilder.h"

#include <algorithm>
#include <cassert>

#include "jet/IndexNode.h"

namespace jet {
namespace {

/// A page of the level below, and the last leaf entry under it.
struct Child {
    base::Bytes last;
    PageNumber page;
};

class TreeBuilder {
public:
    TreeBuilder(FreshPages& pages, PageNumber definitionPage, PageNumber root)
        : pages_(pages), definitionPage_(definitionPage), root_(root), treePages_{root} {}

    std::vector<PageNumber> build(const IndexEntries& entries) {
        std::vector<Child> level = buildLeaves(entries);
        for (std::uint8_t height = 1; level.size() > 1; ++height)
            level = buildNodes(level, height);
        std::sort(treePages_.begin(), treePages_.end());
        return std::move(treePages_);
    }

private:
    std::vector<Child> buildLeaves(const IndexEntries& entries) {
        std::vector<Child> leaves;
        IndexNode leaf(true);
        for (std::size_t i = 0; i < entries.size(); ++i) {
            if (leaf.add(entries.entry(i))) continue;
            // The first leaf turns out not to be the only one only here, so its page comes late.
            const PageNumber page = leaves.empty() ? allocate() : nextLeaf_;
            const PageNumber next = allocate();
            writeLeaf(leaf, page, next, leaves);
            nextLeaf_ = next;
            leaf = IndexNode(true);
            const bool fits = leaf.add(entries.entry(i));
            assert(fits);
            static_cast<void>(fits);
        }
        writeLeaf(leaf, leaves.empty() ? root_ : nextLeaf_, 0, leaves);
        return leaves;
    }

    void writeLeaf(IndexNode& leaf, PageNumber page, PageNumber next, std::vector<Child>& leaves) {
        leaf.previous = leaves.empty() ? 0 : leaves.back().page;
        leaf.next = next;
        write(leaf, page, 0);
        leaves.push_back({lastOf(leaf), page});
    }

    /// The last child of the level becomes the tail of its last node and needs no entry.
    std::vector<Child> buildNodes(const std::vector<Child>& children, std::uint8_t height) {
        std::vector<Child> nodes;
        IndexNode node(false);
        for (std::size_t i = 0; i + 1 < children.size(); ++i) {
            if (node.add(children[i].last, children[i].page)) continue;
            writeNode(node, allocate(), 0, height, nodes);
            node = IndexNode(false);
            const bool fits = node.add(children[i].last, children[i].page);
            assert(fits);
            static_cast<void>(fits);
        }
        writeNode(node, nodes.empty() ? root_ : allocate(), children.back().page, height, nodes);
        return nodes;
    }

    void writeNode(IndexNode& node, PageNumber page, PageNumber tail, std::uint8_t height, std::vector<Child>& nodes) {
        node.tail = tail;
        write(node, page, height);
        nodes.push_back({lastOf(node), page});
    }

    static base::Bytes lastOf(const IndexNode& node) {
        if (node.size() == 0) return {};
        const auto last = node.entry(node.size() - 1);
        return {last.begin(), last.end()};
    }

    void write(const IndexNode& node, PageNumber number, std::uint8_t height) {
        base::Bytes page(kPageSize);
        node.write(page, definitionPage_, height);
        pages_.write(number, page);
    }

    PageNumber allocate() {
        treePages_.push_back(pages_.allocate());
        return treePages_.back();
    }

    FreshPages& pages_;
    PageNumber definitionPage_;
    PageNumber root_;
    std::vector<PageNumber> treePages_;
    PageNumber nextLeaf_ = 0;
};

}  // namespace

void IndexEntries::add(std::span<const std::uint8_t> key, RowPointer row, bool hasNull) {
    const std::size_t offset = bytes_.size();
    bytes_.insert(bytes_.end(), key.begin(), key.end());
    appendRowPointer(bytes_, row);
    places_.push_back({offset, bytes_.size() - offset, hasNull});
}

void IndexEntries::sort() {
    std::sort(places_.begin(), places_.end(), [this](const Place& a, const Place& b) {
        const std::uint8_t* bytes = bytes_.data();
        return std::lexicographical_compare(bytes + a.offset, bytes + a.offset + a.bytes, bytes + b.offset,
                                            bytes + b.offset + b.bytes);
    });
}

std::span<const std::uint8_t> IndexEntries::entry(std::size_t i) const {
    return std::span(bytes_).subspan(places_[i].offset, places_[i].bytes);
}

std::vector<PageNumber> buildIndexTree(FreshPages& pages, PageNumber definitionPage, PageNumber root,
                                       const IndexEntries& entries) {
    return TreeBuilder(pages, definitionPage, root).build(entries);
}

}  // namespace jet
