#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <random>
#include <set>

#include "jet/index/IndexWriter.h"
#include "jet/table/Catalog.h"
#include "jet/table/DefinitionCounters.h"
#include "jet/tree/IndexCursor.h"
#include "tests/support/MemoryPageStore.h"
#include "tests/support/SampleFile.h"

namespace jet {
namespace {

using Entries = std::set<std::pair<base::Bytes, RowPointer>>;

base::Bytes emptyTable(bool isUnique) {
    TableDesign design;
    design.name = u"Probe";
    design.columns = {{.name = u"Schlüssel", .type = ColumnType::Text, .maxUnits = 255}};
    design.indexes = {{.name = u"Index",
                       .columns = {{u"Schlüssel"}},
                       .flags = isUnique ? IndexDefinition::kUnique : std::uint8_t{0}}};
    return test::sampleFile({{design, {}}});
}

/// An index without the rows of a table, and its expected entries. The writer does not look at the meaning of keys.
class Tree {
public:
    explicit Tree(bool isUnique)
        : store(emptyTable(isUnique)),
          definition(openTable(store, u"Probe")->definition()),
          allocator(store),
          writer(std::in_place, store, allocator, definition, 0) {}

    void insert(const base::Bytes& key, RowPointer row, bool hasNull = false) {
        writer->insert(key, row, hasNull);
        expected.emplace(key, row);
    }
    void remove(const base::Bytes& key, RowPointer row) {
        writer->remove(key, row);
        expected.erase({key, row});
    }

    Entries read() {
        Entries entries;
        IndexCursor cursor(store, definition.page, definition.indexes[0].rootPage);
        for (bool there = cursor.first(); there; there = cursor.next())
            entries.emplace(base::Bytes(cursor.key().begin(), cursor.key().end()), cursor.row());
        std::size_t backwards = 0;
        for (bool there = cursor.last(); there; there = cursor.previous())
            ++backwards;
        EXPECT_EQ(backwards, entries.size());
        return entries;
    }

    /// Checks the rules of the tree: entries of nodes are exact, the map has exactly its pages, no page is lost.
    void check() {
        EXPECT_EQ(read(), expected);
        pages.clear();
        chains.clear();
        height = checkPage(definition.indexes[0].rootPage, true);
        for (const auto& [level, chain] : chains)
            EXPECT_EQ(chain.next, 0U) << level;
        const UsageMap owned = UsageMap::read(store, definition.indexes[0].usageMap);
        std::set<PageNumber> mapped;
        for (auto page = owned.next(0); page; page = owned.next(*page + 1))
            mapped.insert(*page);
        EXPECT_EQ(mapped, pages);
        const UsageMap global = UsageMap::read(store, {1, 0});
        const PageNumber before = static_cast<PageNumber>(firstPages);
        for (PageNumber page = before; page < store.pageCount(); ++page)
            EXPECT_NE(global.contains(page), pages.contains(page)) << page;
    }

    /// Gives nodes the shape that other writers use: a tail in every node or in none, and no links.
    void reshape(bool tails) {
        for (const PageNumber page : pages) {
            IndexNode node = nodeAt(page);
            if (node.isLeaf()) continue;
            const std::uint8_t nodeHeight = store.page(page).bytes.u8(26);
            if (tails && node.tail == 0 && node.size() > 1) {
                node.tail = node.child(node.size() - 1);
                node.erase(node.size() - 1);
            } else if (!tails && node.tail != 0) {
                node.insert(node.size(), lastEntry(node.tail), node.tail);
                node.tail = 0;
                if (!node.fits()) node = nodeAt(page);
            }
            node.previous = node.next = 0;
            node.write(store.change(page), definition.page, nodeHeight);
        }
        areNodesLinked = false;
        writer.emplace(store, allocator, definition, 0);
    }

    /// Puts the last leaf below a new node, as its tail.
    void moveLastLeaf() {
        PageNumber parentPage = definition.indexes[0].rootPage;
        const auto lastChild = [&] { return nodeAt(parentPage).childAt(nodeAt(parentPage).childCount() - 1); };
        while (store.page(lastChild()).bytes.u8(26) > 1)
            parentPage = lastChild();
        IndexNode parent = nodeAt(parentPage);
        const PageNumber page = lastChild();
        IndexNode node = nodeAt(page);
        IndexNode lone(false);
        lone.tail = node.childAt(node.childCount() - 1);
        lone.previous = page;
        if (node.tail == 0) node.erase(node.size() - 1);
        node.tail = 0;
        node.next = allocator.allocate();
        UsageMapWriter(store, allocator, definition.indexes[0].usageMap).set(node.next);
        if (parent.tail == 0) parent.erase(parent.size() - 1);
        parent.insert(parent.size(), node.entry(node.size() - 1), page);
        parent.tail = node.next;
        lone.write(store.change(node.next), definition.page, store.page(page).bytes.u8(26));
        node.write(store.change(page), definition.page, store.page(page).bytes.u8(26));
        parent.write(store.change(parentPage), definition.page, store.page(parentPage).bytes.u8(26));
        writer.emplace(store, allocator, definition, 0);
    }

    /// Removes the last entry of each leaf except the last leaf. The nodes keep these entries.
    Entries takeLastOfLeaves() {
        Entries taken;
        for (const PageNumber page : pages) {
            IndexNode leaf = nodeAt(page);
            if (!leaf.isLeaf() || leaf.next == 0 || leaf.size() < 2) continue;
            const auto entry = leaf.entry(leaf.size() - 1);
            const auto key = entry.first(entry.size() - kIndexRowBytes);
            taken.emplace(base::Bytes(key.begin(), key.end()), rowOfEntry(entry));
            leaf.erase(leaf.size() - 1);
            leaf.write(store.change(page), definition.page, 0);
        }
        for (const auto& entry : taken)
            expected.erase(entry);
        areNodesExact = false;
        writer.emplace(store, allocator, definition, 0);
        return taken;
    }

    IndexNode nodeAt(PageNumber page) { return IndexNode(IndexPage(store.page(page), definition.page)); }
    std::size_t entriesOfLastLeaf() {
        IndexCursor cursor(store, definition.page, definition.indexes[0].rootPage);
        cursor.last();
        return nodeAt(cursor.leafPage()).size();
    }

    test::MemoryPageStore store;
    std::size_t firstPages = store.pageCount();
    TableDefinition definition;
    PageAllocator allocator;
    std::optional<IndexWriter> writer;
    Entries expected;
    std::set<PageNumber> pages;  ///< of the tree, found by check()
    int height = 0;
    std::size_t fewestChildren = 2;  ///< of a node
    bool areNodesLinked = true;
    bool areNodesExact = true;

private:
    struct Chain {
        PageNumber last = 0;
        PageNumber next = 0;  ///< the link of the last page
    };
    std::map<int, Chain> chains;  ///< by height, filled by check()

    /// A page's links name its neighbours. Links of nodes may be missing if another writer made them.
    void checkLinks(const IndexPage& page, Chain& chain) {
        const bool mayMiss = !page.isLeaf() && !areNodesLinked;
        EXPECT_TRUE(page.previous() == chain.last || (mayMiss && page.previous() == 0)) << page.number();
        EXPECT_TRUE(chain.last == 0 || chain.next == page.number() || (mayMiss && chain.next == 0)) << chain.last;
        chain = {page.number(), page.next()};
    }

    base::Bytes lastEntry(PageNumber page) {
        const IndexPage read(store.page(page), definition.page);
        if (read.isLeaf() || read.tail() == 0) return read.entry(read.size() - 1);
        return lastEntry(read.tail());
    }

    int checkPage(PageNumber number, bool isRoot) {
        EXPECT_TRUE(pages.insert(number).second);
        const IndexPage page(store.page(number), definition.page);
        int below = -1;
        for (std::size_t i = 0; !page.isLeaf() && i < page.size(); ++i) {
            if (areNodesExact) {
                EXPECT_EQ(page.entry(i), lastEntry(page.child(i))) << number;
            }
            below = checkPage(page.child(i), false);
        }
        if (!page.isLeaf() && page.tail() != 0) below = checkPage(page.tail(), false);
        const std::size_t children = page.size() + (page.tail() != 0 ? 1 : 0);
        EXPECT_GE(children, page.isLeaf() ? (isRoot ? 0U : 1U) : fewestChildren) << number;
        EXPECT_EQ(store.page(number).bytes.u8(26), below + 1);
        checkLinks(page, chains[below + 1]);
        return below + 1;
    }
};

/// Keys share beginnings of various lengths, so that prefixes appear and disappear.
base::Bytes randomKey(std::mt19937& random, std::size_t bytes) {
    base::Bytes key(bytes, 0x40);
    for (std::size_t i = 0; i < 6; ++i)
        key[random() % bytes] = static_cast<std::uint8_t>(0x30 + random() % 32);
    return key;
}

RowPointer randomRow(std::mt19937& random) {
    return {static_cast<PageNumber>(3 + random() % 60'000), static_cast<std::uint8_t>(random() % 250)};
}

TEST(IndexWriter, HoldsAnySetOfEntriesWhileItGrowsAndShrinks) {
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const struct {
        const char* what;
        std::size_t shortest, longest;
        int entries;
        int height;
        int shape;  ///< reshaped after each batch: 1 with tails, 2 without, 3 changing
    } cases[] = {
        {"one leaf", 4, 12, 60, 0, 0},
        {"short keys", 6, 14, 1500, 1, 0},
        {"long keys", 200, 500, 500, 2, 0},
        {"keys of any length", 8, 1700, 400, 2, 0},
        {"tails everywhere", 300, 510, 400, 2, 1},
        {"no tails", 300, 510, 400, 2, 2},
        {"both shapes", 100, 900, 500, 2, 3},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        Tree tree(false);
        // If three entries take more than a page, one of them may end up alone.
        if (c.longest > 1000) tree.fewestChildren = 1;
        const auto add = [&] {
            tree.insert(randomKey(random, c.shortest + random() % (c.longest - c.shortest)), randomRow(random));
        };
        const auto take = [&] {
            auto found = tree.expected.lower_bound({randomKey(random, c.shortest), {}});
            if (found == tree.expected.end()) found = tree.expected.begin();
            const auto entry = *found;
            tree.remove(entry.first, entry.second);
        };
        for (int batch = 0; batch < 12; ++batch) {
            // The tree grows, stays about equal, shrinks to nothing, and grows again.
            const int goal = batch == 8 ? 0 : batch < 8 || batch == 11 ? c.entries : c.entries / 8;
            for (int i = 0; i < c.entries / 5 && !tree.expected.empty(); ++i) {
                take();
                add();
            }
            while (static_cast<int>(tree.expected.size()) < goal)
                add();
            while (static_cast<int>(tree.expected.size()) > goal)
                take();
            tree.check();
            ASSERT_FALSE(testing::Test::HasFailure()) << batch;
            EXPECT_TRUE(batch != 0 || tree.height >= c.height) << tree.height;
            EXPECT_TRUE(batch != 8 || tree.pages.size() == 1) << tree.pages.size();
            if (c.shape != 0) tree.reshape(c.shape == 1 || (c.shape == 3 && batch % 2 == 0));
        }
    }
}

TEST(IndexWriter, SortedEntriesLeaveFullPages) {
    for (const bool ascending : {true, false}) {
        SCOPED_TRACE(ascending ? "ascending" : "descending");
        Tree tree(true);
        base::Bytes key(300, 0x41);
        for (std::uint32_t i = 0; i < 2000; ++i) {
            const std::uint32_t n = ascending ? i : 2000 - i;
            for (unsigned byte = 0; byte < 4; ++byte)
                key[100 + byte] = static_cast<std::uint8_t>(n >> (24 - 8 * byte));
            // Without this, a common prefix would let thousands of entries fit on a leaf.
            key[0] = static_cast<std::uint8_t>(n / 8);
            tree.insert(key, {3 + n, 0});
        }
        tree.check();
        // Eleven such entries fit on a page, more with a prefix. Nodes are equally full.
        EXPECT_LE(tree.pages.size(), 2000 / 11 + 2000 / 121 + 2000 / 1331 + 8U);
        EXPECT_EQ(tree.height, 3);
        EXPECT_EQ(DefinitionCounters(tree.store, tree.definition).distinctKeys(0), 2000U);

        // The last leaf is the only child of its node. When the leaf is removed, so is the node.
        for (std::uint32_t n = 2000; tree.entriesOfLastLeaf() > 1; ++n)
            tree.insert(base::Bytes(300, 0xFF), {3 + n, 0}, true);
        tree.moveLastLeaf();
        const auto last = *tree.expected.rbegin();
        tree.remove(last.first, last.second);
        tree.check();
    }
}

TEST(IndexWriter, PagesThatBecomeSmallAreJoined) {
    Tree tree(false);
    std::mt19937 random(11);
    for (int i = 0; i < 2000; ++i)
        tree.insert(randomKey(random, 200), randomRow(random));
    tree.check();
    const std::size_t before = tree.pages.size();
    std::vector<std::pair<base::Bytes, RowPointer>> gone(tree.expected.begin(), tree.expected.end());
    std::shuffle(gone.begin(), gone.end(), random);
    gone.resize(gone.size() * 9 / 10);
    for (const auto& [key, row] : gone)
        tree.remove(key, row);
    tree.check();
    EXPECT_LE(tree.pages.size(), before / 3) << "of " << before << ", with a tenth of the entries";
}

TEST(IndexWriter, AKeyIsUniqueAcrossTheLeavesUnlessItHoldsNull) {
    Tree tree(true);
    for (std::uint8_t i = 1; i < 40; ++i)
        tree.insert(base::Bytes(400, i), {100U + i, 1});
    for (std::uint8_t i = 1; i < 40; ++i) {
        // With lower and higher row pointers, the equal key is on the left, on the right, or in another leaf.
        for (const RowPointer row : {RowPointer{3, 0}, RowPointer{9999, 0}}) {
            EXPECT_THROW(tree.writer->insert(base::Bytes(400, i), row), base::RuntimeError);
        }
    }
    tree.insert({0x00}, {5, 1}, true);
    tree.insert({0x00}, {6, 1}, true);
    EXPECT_THROW(tree.insert({0x00}, {5, 1}, true), base::RuntimeError) << "there already";
    EXPECT_THROW(tree.insert(base::Bytes(2000, 1), {7, 7}), base::RuntimeError) << "longer than half a page";
    tree.writer->removeEntryOf({120, 1});
    tree.expected.erase({base::Bytes(400, 20), {120, 1}});
    EXPECT_THROW(tree.writer->remove(base::Bytes(400, 20), {120, 1}), base::RuntimeError) << "gone already";
    EXPECT_THROW(tree.writer->removeEntryOf({120, 1}), base::RuntimeError);
    tree.check();
    EXPECT_EQ(DefinitionCounters(tree.store, tree.definition).distinctKeys(0), 40U);

    // A node may name an entry that was removed. The same key with a higher row is then in the next leaf.
    const Entries taken = tree.takeLastOfLeaves();
    EXPECT_GE(taken.size(), 3U);
    for (const auto& [key, row] : taken) {
        tree.insert(key, {row.page + 1000, 0});
        EXPECT_THROW(tree.writer->insert(key, row), base::RuntimeError);
    }
    tree.check();
}

/// A tree of three levels with one wrong field. It must not be possible to empty it.
TEST(IndexWriter, JoinsOnlyPagesThatAreNeighbours) {
    const struct {
        const char* what;
        std::function<void(IndexNode& node, IndexNode& leaf, const base::Bytes& end)> damage;
    } cases[] = {
        {"a leaf's way on", [](auto&, IndexNode& leaf, auto&) { leaf.next = leaf.previous; }},
        {"a leaf's way back", [](auto&, IndexNode& leaf, auto&) { leaf.previous = leaf.next; }},
        {"a leaf that is its own neighbour", [](auto& node, IndexNode& leaf, auto&) { leaf.next = node.child(0); }},
        {"a node's way on", [](IndexNode& node, auto&, auto&) { node.next = node.child(0); }},
        {"a node's way back", [](IndexNode& node, auto&, auto&) { node.previous = node.child(0); }},
        {"a tail beyond its bounds",
         [](IndexNode& node, auto&, const base::Bytes& end) {
             node.tail = node.child(node.size() - 1);
             node.replaceEntry(node.size() - 1, end);
         }},
        {"a leaf in a node's place", [](IndexNode& node, IndexNode& leaf, auto&) { node = leaf; }},
        {"a child twice", [](IndexNode& node, auto&, auto&) { node.setChildAt(1, node.child(0)); }},
        {"a child of no page", [](IndexNode& node, auto&, auto&) { node.setChildAt(1, 0xFFFFFF); }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        std::mt19937 random(3);
        Tree tree(false);
        for (int i = 0; i < 400; ++i)
            tree.insert(randomKey(random, 400), randomRow(random));
        tree.check();
        const IndexNode root = tree.nodeAt(tree.definition.indexes[0].rootPage);
        ASSERT_FALSE(tree.nodeAt(root.child(1)).isLeaf());
        IndexNode node = tree.nodeAt(root.child(1));
        const PageNumber leafPage = node.child(0);
        IndexNode leaf = tree.nodeAt(leafPage);
        c.damage(node, leaf, base::Bytes(root.entry(1).begin(), root.entry(1).end()));
        leaf.write(tree.store.change(leafPage), tree.definition.page, 0);
        node.write(tree.store.change(root.child(1)), tree.definition.page, node.isLeaf() ? 0 : 1);
        tree.writer.emplace(tree.store, tree.allocator, tree.definition, 0);
        EXPECT_THROW(
            {
                for (const auto& [key, row] : Entries(tree.expected))
                    tree.remove(key, row);
            },
            base::RuntimeError);
    }
}

}  // namespace
}  // namespace jet
