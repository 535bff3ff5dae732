#include "jet/fresh/IndexTreeBuilder.h"

#include <algorithm>
#include <cassert>
#include <utility>

#include "jet/tree/IndexNode.h"

namespace jet {
namespace {

/// A page of the level below, and the last leaf entry below it.
struct Child {
    base::Bytes last;
    PageNumber page;
};

class TreeBuilder {
public:
    TreeBuilder(FreshPages& pages, PageNumber definitionPage, PageNumber root)
        : pages_(pages), definitionPage_(definitionPage), root_(root), treePages_{root} {}

    std::vector<PageNumber> build(const EntryFeed& nextEntry) {
        std::vector<Child> level = buildLevel(
            0,
            [&] {
                return Part{nextEntry(), 0};
            },
            0);
        for (std::uint8_t height = 1; level.size() > 1; ++height) {
            const std::vector<Child> below = std::move(level);
            std::size_t i = 0;
            // The last child becomes the tail of the last node and needs no entry.
            const auto next = [&] { return i + 1 < below.size() ? partOf(below[i++]) : Part{}; };
            level = buildLevel(height, next, below.back().page);
        }
        std::sort(treePages_.begin(), treePages_.end());
        return std::move(treePages_);
    }

private:
    /// An entry of a page.
    struct Part {
        std::span<const std::uint8_t> entry;
        PageNumber child = 0;
    };
    static Part partOf(const Child& child) { return {child.last, child.page}; }

    /// Fills pages one after the other. Only when a second page begins is it clear that the first is not the root.
    /// @param next  returns the next entry, empty after the last
    template <typename Next>
    std::vector<Child> buildLevel(std::uint8_t height, Next next, PageNumber tail) {
        std::vector<Child> level;
        IndexNode node(height == 0);
        PageNumber page = 0;
        for (Part part = next(); !part.entry.empty(); part = next()) {
            if (node.add(part.entry, part.child)) continue;
            if (page == 0) page = allocate();
            node.next = allocate();
            const PageNumber before = std::exchange(page, node.next);
            write(node, before, height, level);
            node = IndexNode(height == 0);
            node.previous = before;
            const bool fits = node.add(part.entry, part.child);
            assert(fits);
            static_cast<void>(fits);
        }
        node.tail = tail;
        write(node, page == 0 ? root_ : page, height, level);
        return level;
    }

    static base::Bytes lastOf(const IndexNode& node) {
        if (node.size() == 0) return {};
        const auto last = node.entry(node.size() - 1);
        return {last.begin(), last.end()};
    }

    void write(const IndexNode& node, PageNumber number, std::uint8_t height, std::vector<Child>& level) {
        base::Bytes page(kPageSize);
        node.write(page, definitionPage_, height);
        pages_.write(number, page);
        level.push_back({lastOf(node), number});
    }

    PageNumber allocate() {
        treePages_.push_back(pages_.allocate());
        return treePages_.back();
    }

    FreshPages& pages_;
    PageNumber definitionPage_;
    PageNumber root_;
    std::vector<PageNumber> treePages_;
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

EntryFeed IndexEntries::feed() const {
    return [this, i = std::size_t{0}]() mutable { return i < size() ? entry(i++) : std::span<const std::uint8_t>{}; };
}

std::vector<PageNumber> buildIndexTree(FreshPages& pages, PageNumber definitionPage, PageNumber root,
                                       const EntryFeed& nextEntry) {
    return TreeBuilder(pages, definitionPage, root).build(nextEntry);
}

}  // namespace jet
