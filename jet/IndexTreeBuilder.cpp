#include "jet/IndexTreeBuilder.h"

#include <algorithm>
#include <cassert>

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
        IndexPageBuilder leaf(true);
        for (std::size_t i = 0; i < entries.size(); ++i) {
            if (leaf.add(entries.entry(i))) continue;
            // The first leaf turns out not to be the only one only here, so its page comes late.
            const PageNumber page = leaves.empty() ? allocate() : nextLeaf_;
            const PageNumber next = allocate();
            writeLeaf(leaf, page, next, leaves);
            nextLeaf_ = next;
            leaf = IndexPageBuilder(true);
            const bool fits = leaf.add(entries.entry(i));
            assert(fits);
            static_cast<void>(fits);
        }
        writeLeaf(leaf, leaves.empty() ? root_ : nextLeaf_, 0, leaves);
        return leaves;
    }

    void writeLeaf(const IndexPageBuilder& leaf, PageNumber page, PageNumber next, std::vector<Child>& leaves) {
        write(leaf, page, {definitionPage_, leaves.empty() ? 0 : leaves.back().page, next, 0, 0});
        base::Bytes last;
        if (!leaf.empty()) last.assign(leaf.last().begin(), leaf.last().end());
        leaves.push_back({std::move(last), page});
    }

    /// The last child of the level becomes the tail of its last node and needs no entry.
    std::vector<Child> buildNodes(const std::vector<Child>& children, std::uint8_t height) {
        std::vector<Child> nodes;
        IndexPageBuilder node(false);
        for (std::size_t i = 0; i + 1 < children.size(); ++i) {
            if (node.add(children[i].last, children[i].page)) continue;
            writeNode(node, allocate(), 0, height, nodes);
            node = IndexPageBuilder(false);
            const bool fits = node.add(children[i].last, children[i].page);
            assert(fits);
            static_cast<void>(fits);
        }
        writeNode(node, nodes.empty() ? root_ : allocate(), children.back().page, height, nodes);
        return nodes;
    }

    void writeNode(const IndexPageBuilder& node, PageNumber page, PageNumber tail, std::uint8_t height,
                   std::vector<Child>& nodes) {
        write(node, page, {definitionPage_, 0, 0, tail, height});
        nodes.push_back({base::Bytes(node.last().begin(), node.last().end()), page});
    }

    void write(const IndexPageBuilder& content, PageNumber number, const IndexPageBuilder::Links& links) {
        base::Bytes page(kPageSize);
        content.write(page, links);
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
