#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "base/RuntimeError.h"
#include "jet/fresh/IndexTreeBuilder.h"
#include "jet/page/PageFile.h"
#include "jet/storage/MemoryIo.h"
#include "jet/table/TableDefinition.h"
#include "jet/tree/IndexCursor.h"
#include "jet/tree/IndexNode.h"

namespace jet {
namespace {

constexpr PageNumber kTablePage = 2;

/// An index in its own file, and its expected entries.
struct Tree {
    base::Bytes file;
    TableDefinition table;
    IndexDefinition index;
    std::vector<PageNumber> pages;
    std::map<base::Bytes, RowPointer> expected;  ///< by key; all keys are different

    /// @param keyBytes  length of the keys, which decides how many fit on a page
    Tree(std::size_t count, std::size_t keyBytes) {
        table.page = kTablePage;
        MemoryIo io;
        FreshPages fresh(io);
        for (int i = 0; i < 3; ++i)
            fresh.allocate();
        index.rootPage = fresh.allocate();
        IndexEntries entries;
        for (std::size_t i = 0; i < count; ++i) {
            // The order of the numbers is the order of the keys, but they are added in another order.
            const std::size_t number = i * 7919 % count * 2 + 1;
            const RowPointer row{static_cast<PageNumber>(number + 3), static_cast<std::uint8_t>(number % 50)};
            entries.add(key(number, keyBytes), row);
            expected[key(number, keyBytes)] = row;
        }
        entries.sort();
        pages = buildIndexTree(fresh, kTablePage, index.rootPage, entries.feed());
        file = io.bytes();
    }

    static base::Bytes key(std::size_t number, std::size_t bytes) {
        base::Bytes key(bytes, 0x55);
        for (std::size_t i = 0; i < 4; ++i)
            key[4 - i] = static_cast<std::uint8_t>(number >> (8 * i));
        return key;
    }

    PageNumber pageWhere(const std::function<bool(const IndexPage&)>& holds) const {
        MemoryIo io(file);
        PageFile source(io, 0);
        for (const PageNumber page : pages) {
            if (holds(IndexPage(source.page(page), kTablePage))) return page;
        }
        return 0;
    }

    std::uint8_t* at(PageNumber page, std::size_t offset) { return file.data() + page * kPageSize + offset; }
    void put(PageNumber page, std::size_t offset, std::uint32_t value) {
        base::putU32(std::span(file).subspan(page * kPageSize, kPageSize), offset, value);
    }
};

using Entries = std::vector<std::pair<base::Bytes, RowPointer>>;

Entries walk(const Tree& tree, bool forwards) {
    MemoryIo io(tree.file);
    PageFile source(io, 0);
    IndexCursor cursor(source, tree.table.page, tree.index.rootPage);
    Entries entries;
    for (bool there = forwards ? cursor.first() : cursor.last(); there;
         there = forwards ? cursor.next() : cursor.previous()) {
        entries.emplace_back(base::Bytes(cursor.key().begin(), cursor.key().end()), cursor.row());
    }
    EXPECT_FALSE(cursor.isAtEntry());
    return entries;
}

TEST(IndexTree, IsWalkedBothWaysAndSearchedAtAnyHeight) {
    const struct {
        std::size_t count, keyBytes;
        int height;
    } cases[] = {{0, 10, 0},   {1, 10, 0},    {250, 9, 0},   {600, 9, 1},
                 {40, 500, 1}, {400, 400, 2}, {700, 400, 3}, {3000, 505, 4}};
    for (const auto& c : cases) {
        const Tree tree(c.count, c.keyBytes);
        const Entries expected(tree.expected.begin(), tree.expected.end());
        EXPECT_EQ(walk(tree, true), expected) << c.count;
        EXPECT_EQ(walk(tree, false), Entries(expected.rbegin(), expected.rend())) << c.count;
        EXPECT_EQ(*(tree.file.data() + tree.index.rootPage * kPageSize + 26), c.height) << c.count;

        MemoryIo io(tree.file);
        PageFile source(io, 0);
        IndexCursor cursor(source, tree.table.page, tree.index.rootPage);
        for (std::size_t number = 0; number <= 2 * c.count; number += 1 + c.count / 50) {
            const base::Bytes wanted = Tree::key(number, c.keyBytes);
            const auto found = tree.expected.lower_bound(wanted);
            ASSERT_EQ(cursor.seek(wanted), found != tree.expected.end()) << number;
            if (!cursor.isAtEntry()) continue;
            EXPECT_EQ(cursor.row(), found->second);
            EXPECT_EQ(cursor.keyStartsWith(wanted), found->first == wanted);
        }
    }
}

TEST(IndexTree, ASearchReadsNoMorePagesThanTheTreeHasLevels) {
    const Tree tree(30000, 12);
    class CountingSource : public PageSource {
    public:
        explicit CountingSource(PageSource& pages) : pages_(pages) {}
        PageNumber pageCount() const override { return pages_.pageCount(); }
        PageView page(PageNumber number) override {
            ++read;
            return pages_.page(number);
        }
        int read = 0;

    private:
        PageSource& pages_;
    };
    MemoryIo io(tree.file);
    PageFile file(io, 0);
    CountingSource source(file);
    IndexCursor cursor(source, tree.table.page, tree.index.rootPage);
    EXPECT_TRUE(cursor.seek(Tree::key(40001, 12)));
    EXPECT_LE(source.read, 3);
}

TEST(IndexTree, ANodeWithoutTailIsReadToo) {
    Tree tree(40, 500);
    MemoryIo io(tree.file);
    PageFile source(io, 0);
    const IndexPage root(source.page(tree.index.rootPage), kTablePage);
    IndexNode node(false);
    for (std::size_t i = 0; i < root.size(); ++i)
        node.add(root.entry(i), root.child(i));
    const IndexPage lastLeaf(source.page(root.tail()), kTablePage);
    // The node names the first entry of the leaf, not the last. This happens when other writers append entries.
    node.add(lastLeaf.entry(0), root.tail());
    node.write(std::span(tree.file).subspan(root.number() * kPageSize, kPageSize), kTablePage, 1);
    EXPECT_EQ(walk(tree, true).size(), 40U);
    EXPECT_EQ(walk(tree, false).size(), 40U);
    IndexCursor cursor(source, tree.table.page, tree.index.rootPage);
    EXPECT_TRUE(cursor.seek(tree.expected.rbegin()->first));
}

TEST(IndexTree, DamageIsNamedInsteadOfLosingEntries) {
    const Tree sound(400, 400);  // three levels
    const auto isMiddleLeaf = [](const IndexPage& page) {
        return page.isLeaf() && page.next() != 0 && page.previous() != 0;
    };
    const auto isNode = [](const IndexPage& page) { return !page.isLeaf(); };
    const PageNumber leaf = sound.pageWhere(isMiddleLeaf);
    const PageNumber lastLeaf =
        sound.pageWhere([](const IndexPage& page) { return page.isLeaf() && page.next() == 0; });
    const PageNumber node =
        sound.pageWhere([&](const IndexPage& page) { return isNode(page) && page.number() != sound.index.rootPage; });
    const PageNumber root = sound.index.rootPage;
    const auto childPlace = [&](std::size_t entries) { return kIndexEntriesOffset + entries * 408 - 4; };
    const struct {
        const char* what;
        std::function<void(Tree&)> damage;
    } cases[] = {
        {"a leaf of another kind", [&](Tree& t) { *t.at(leaf, 0) = 1; }},
        {"a leaf of another table", [&](Tree& t) { t.put(leaf, 4, 99); }},
        {"a leaf left out of the chain", [&](Tree& t) { t.put(leaf, 16, t.pages.front()); }},
        {"a chain that goes on behind the last leaf", [&](Tree& t) { t.put(lastLeaf, 16, leaf); }},
        {"a wrong way back", [&](Tree& t) { t.put(leaf, 12, lastLeaf); }},
        {"a node that is its own child", [&](Tree& t) { t.put(root, 20, root); }},
        {"a tail lost", [&](Tree& t) { t.put(root, 20, 0); }},
        {"a child outside the file", [&](Tree& t) { t.put(root, 20, 0xFFFFFF); }},
        {"the header as child", [&](Tree& t) { t.put(root, 20, 0x01000000); }},
        {"a node's child twice",
         [&](Tree& t) { std::copy_n(t.at(node, childPlace(1)), 4, t.at(node, childPlace(2))); }},
        {"an empty node",
         [&](Tree& t) {
             std::fill_n(t.at(node, 27), 453, std::uint8_t{0});
             t.put(node, 0, *t.at(node, 0) | 0x0100U | (kIndexEntriesBytes << 16U));
             t.put(node, 20, 0);
         }},
        {"a leaf's entries out of order", [&](Tree& t) { *t.at(leaf, kIndexEntriesOffset) = 0xFF; }},
        {"an entry outside the node's bounds", [&](Tree& t) { *t.at(leaf, kIndexEntriesOffset) = 0; }},
        {"an entry that ends too early", [&](Tree& t) { *t.at(leaf, 27) |= 4; }},
        {"the last entry's end lost", [&](Tree& t) { std::fill_n(t.at(lastLeaf, 27 + 40), 413, std::uint8_t{0}); }},
        {"a prefix longer than the first entry", [&](Tree& t) { *t.at(leaf, 25) = 0x0F; }},
    };
    for (const auto& c : cases) {
        Tree tree = sound;
        c.damage(tree);
        EXPECT_THROW(walk(tree, true), base::RuntimeError) << c.what;
        EXPECT_THROW(walk(tree, false), base::RuntimeError) << c.what;
    }
}

}  // namespace
}  // namespace jet
