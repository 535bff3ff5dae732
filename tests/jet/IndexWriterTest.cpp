#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <set>

#include "jet/index/IndexWriter.h"
#include "jet/table/Catalog.h"
#include "jet/table/DefinitionCounters.h"
#include "jet/tree/IndexCursor.h"
#include "tests/support/MemoryPageStore.h"
#include "tests/support/SampleFile.h"

/// Checks what random work on whole tables (tests/embedded) does not: how full the pages are, and how the index of
/// another writer is changed. There are no rows, because the writer does not look at the meaning of keys.
namespace jet {
namespace {

using Entries = std::set<std::pair<base::Bytes, RowPointer>>;

base::Bytes emptyTable() {
    return test::sampleFile({{{u"Probe",
                               {{u"Schlüssel", ColumnType::Text, 255}},
                               {{u"Index", {{u"Schlüssel"}}, false, IndexDefinition::kUnique}}},
                              {}}});
}

class Tree {
public:
    explicit Tree(const base::Bytes& file = emptyTable()) : store(file) {}

    void insert(const base::Bytes& key, RowPointer row, bool hasNull = false) {
        writer.insert(key, row, hasNull);
        expected.emplace(key, row);
    }

    Entries read() {
        Entries entries;
        IndexCursor cursor(store, definition.page, definition.indexes[0].rootPage);
        for (bool there = cursor.first(); there; there = cursor.next())
            entries.emplace(base::Bytes(cursor.key().begin(), cursor.key().end()), cursor.row());
        return entries;
    }

    IndexNode nodeAt(PageNumber page) { return IndexNode(IndexPage(store.page(page), definition.page)); }

    std::vector<PageNumber> pages() {
        const UsageMap map = UsageMap::read(store, definition.indexes[0].usageMap);
        std::vector<PageNumber> all;
        for (auto page = map.next(0); page; page = map.next(*page + 1))
            all.push_back(*page);
        return all;
    }

    test::MemoryPageStore store;
    TableDefinition definition = openTable(store, u"Probe")->definition();
    PageAllocator allocator{store};
    IndexWriter writer{store, allocator, definition, 0};
    Entries expected;
};

TEST(IndexWriter, FillsPagesInOrderAndJoinsThemWhenTheyBecomeSmall) {
    for (const bool ascending : {true, false}) {
        SCOPED_TRACE(ascending ? "ascending" : "descending");
        Tree tree;
        base::Bytes key(300, 0x41);
        for (std::uint32_t i = 0; i < 2000; ++i) {
            const std::uint32_t n = ascending ? i : 2000 - i;
            for (unsigned byte = 0; byte < 4; ++byte)
                key[100 + byte] = static_cast<std::uint8_t>(n >> (24 - 8 * byte));
            // Without this, a common prefix would let thousands of entries fit on a leaf.
            key[0] = static_cast<std::uint8_t>(n / 8);
            tree.insert(key, {3 + n, 0});
        }
        EXPECT_EQ(tree.read(), tree.expected);
        // Eleven such entries fit on a page, more with a common prefix. Nodes are as full as leaves.
        const std::size_t full = tree.pages().size();
        EXPECT_LE(full, 2000 / 11 + 2000 / 121 + 2000 / 1331 + 8U);
        EXPECT_EQ(DefinitionCounters(tree.store, tree.definition).distinctKeys(0), 2000U);

        std::vector<std::pair<base::Bytes, RowPointer>> gone(tree.expected.begin(), tree.expected.end());
        std::shuffle(gone.begin(), gone.end(), std::mt19937(11));
        for (std::size_t i = 0; i + 3 < gone.size(); ++i) {
            tree.writer.remove(gone[i].first, gone[i].second);
            EXPECT_TRUE(i != gone.size() * 9 / 10 || tree.pages().size() <= full * 2 / 5);
        }
        EXPECT_EQ(tree.pages().size(), 1U);
    }
}

/// Each page of a tree of three levels names its neighbours, its children and their last entries. Makes one of these
/// wrong.
TEST(IndexWriter, EmptiesATreeWithAWrongLinkCompletelyOrRefuses) {
    std::mt19937 random(3);
    Tree sound;
    for (std::uint32_t i = 0; i < 400; ++i) {
        base::Bytes key(400, 0x40);
        for (int place = 0; place < 6; ++place)
            key[random() % 400] = static_cast<std::uint8_t>(random());
        sound.insert(key, {3 + i, 0});
    }
    const base::Bytes file = sound.store.file();
    const std::vector<PageNumber> pages = sound.pages();
    int refused = 0;
    for (int trial = 0; trial < 400; ++trial) {
        Tree tree(file);
        const PageNumber page = pages[random() % pages.size()], other = pages[random() % pages.size()];
        const auto kind = static_cast<std::size_t>(random() % 5);
        IndexNode node = sound.nodeAt(page);
        if (kind < 3)
            base::putU32(tree.store.change(page), 12 + 4 * kind, other);
        else if (node.isLeaf())
            continue;
        else if (kind == 3)
            node.setChildAt(random() % node.childCount(), other);
        else
            node.replaceEntry(node.size() - 1, sound.nodeAt(pages.front()).entry(0));
        if (kind > 2) node.write(tree.store.change(page), tree.definition.page, tree.store.page(page).bytes.u8(26));
        SCOPED_TRACE("page " + std::to_string(page) + ", kind " + std::to_string(kind));
        try {
            for (const auto& [key, row] : sound.expected)
                tree.writer.remove(key, row);
            EXPECT_TRUE(tree.read().empty());
            EXPECT_EQ(tree.pages().size(), 1U);
        } catch (const base::RuntimeError&) {
            ++refused;
        }
    }
    EXPECT_GT(refused, 120);
}

TEST(IndexWriter, AKeyIsUniqueAcrossLeavesUnlessItContainsNull) {
    Tree tree;
    for (std::uint8_t i = 1; i < 40; ++i)
        tree.insert(base::Bytes(400, i), {100U + i, 1});
    for (std::uint8_t i = 1; i < 40; ++i) {
        // With lower and higher row pointers, the equal key is to the left, to the right, or in another leaf.
        for (const RowPointer row : {RowPointer{3, 0}, RowPointer{9999, 0}})
            EXPECT_THROW(tree.writer.insert(base::Bytes(400, i), row), base::RuntimeError);
    }
    tree.insert({0x00}, {5, 1}, true);
    tree.insert({0x00}, {6, 1}, true);
    EXPECT_THROW(tree.insert({0x00}, {5, 1}, true), base::RuntimeError) << "is already there";
    EXPECT_THROW(tree.insert(base::Bytes(2000, 1), {7, 7}), base::RuntimeError) << "longer than half a page";
    tree.writer.removeEntryOf({120, 1});
    tree.expected.erase({base::Bytes(400, 20), {120, 1}});
    EXPECT_THROW(tree.writer.remove(base::Bytes(400, 20), {120, 1}), base::RuntimeError) << "is already removed";
    EXPECT_THROW(tree.writer.removeEntryOf({120, 1}), base::RuntimeError);
    EXPECT_EQ(tree.read(), tree.expected);
    EXPECT_EQ(DefinitionCounters(tree.store, tree.definition).distinctKeys(0), 40U);

    // A node may name an entry that was removed. The same key with a higher row then goes to the next leaf.
    Entries taken;
    for (const PageNumber page : tree.pages()) {
        IndexNode leaf = tree.nodeAt(page);
        if (!leaf.isLeaf() || leaf.next == 0 || leaf.size() < 2) continue;
        const auto entry = leaf.entry(leaf.size() - 1);
        taken.emplace(base::Bytes(entry.begin(), entry.end() - kIndexRowBytes), rowOfEntry(entry));
        leaf.erase(leaf.size() - 1);
        leaf.write(tree.store.change(page), tree.definition.page, 0);
    }
    EXPECT_GE(taken.size(), 3U);
    for (const auto& [key, row] : taken) {
        IndexWriter writer(tree.store, tree.allocator, tree.definition, 0);
        writer.insert(key, {row.page + 1000, 0});
        EXPECT_THROW(writer.insert(key, row), base::RuntimeError);
    }
}

}  // namespace
}  // namespace jet
