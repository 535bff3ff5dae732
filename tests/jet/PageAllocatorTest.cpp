#include <gtest/gtest.h>
#include <random>
#include <set>

#include "jet/page/DataPageEditor.h"
#include "jet/space/PageAllocator.h"
#include "jet/space/UsageMapWriter.h"
#include "jet/table/Catalog.h"
#include "jet/table/Table.h"
#include "tests/jet/Hex.h"
#include "tests/jet/PagesInMemory.h"
#include "tests/support/MemoryPageStore.h"
#include "tests/support/SampleFile.h"

namespace jet {
namespace {

constexpr RowPointer kGlobalMap{1, 0};

/// A file without tables, with further pages that are all in use.
test::MemoryPageStore fileOf(PageNumber pages, std::size_t rowBytes = 0) {
    test::MemoryPageStore store(test::sampleFile({}));
    store.extendTo(pages);
    if (rowBytes != 0) {
        std::vector<PageNumber> behind;
        for (PageNumber page = pages; page < 8 * (rowBytes - 5); ++page)
            behind.push_back(page);
        EXPECT_TRUE(UsageMapRow(store, kGlobalMap).replace(UsageMap::inlineRow(0, behind, rowBytes)));
    }
    return store;
}

std::uint8_t kindOf(test::MemoryPageStore& store, RowPointer map) {
    return DataPage(store.page(map.page)).slot(map.slot).bytes[0];
}

TEST(PageAllocator, TakesTheLowestFreePageBeforeTheFileGrows) {
    test::MemoryPageStore store(test::sampleFile({}));
    PageAllocator allocator(store);
    const PageNumber count = store.pageCount();
    for (PageNumber i = 0; i < 3; ++i)
        EXPECT_EQ(allocator.allocate(), count + i);
    store.change(count)[100] = 7;
    allocator.free(count + 1);
    allocator.free(count);
    EXPECT_EQ(store.page(count).bytes.u32(0), 0U);
    EXPECT_EQ(store.page(count).bytes.u8(100), 7) << "the rest stays as it was";
    EXPECT_EQ(PageAllocator(store).allocate(), count) << "another one sees it too";
    EXPECT_EQ(store.page(count).bytes.u8(100), 0);
    EXPECT_EQ(allocator.allocate(), count + 1);
    EXPECT_EQ(allocator.allocate(), count + 3);
    EXPECT_EQ(store.pageCount(), count + 4);
}

TEST(PageAllocator, RefusesWhatMustNotBecomeFree) {
    test::MemoryPageStore store(test::sampleFile({}));
    PageAllocator allocator(store);
    const PageNumber page = allocator.allocate();
    allocator.free(page);
    for (const PageNumber wrong : {page, PageNumber{0}, PageNumber{1}, PageNumber{5}, page + 1})
        EXPECT_THROW(allocator.free(wrong), base::RuntimeError) << wrong;
}

/// The map grows past each of its limits: longer rows, the end of page 1, one and two more bitmap pages.
TEST(PageAllocator, TheMapGrowsWithTheFile) {
    const struct {
        const char* what;
        std::size_t rowBytes;
        PageNumber pages;
        int kind;
    } cases[] = {
        {"a row as it is", 69, 500, 0},
        {"a longer row", 69, 512, 0},
        {"a row of the greatest length", 4001, 31'960, 0},
        {"page 1 is full", 4009, 32'032, 1},
        {"page 1 is full, just before the second bitmap", 4009, 32'700, 1},
        {"page 1 is full, and the first bitmap's page is in the second bitmap", 4009, 32'735, 1},
    };
    for (const auto& c : cases) {
        test::MemoryPageStore store = fileOf(c.pages, c.rowBytes);
        PageAllocator growing(store);
        std::set<PageNumber> handedOut;
        for (int i = 0; i < 60; ++i)
            EXPECT_TRUE(handedOut.insert(growing.allocate()).second) << c.what;
        EXPECT_EQ(kindOf(store, kGlobalMap), c.kind) << c.what;
        const UsageMap map = UsageMap::read(store, kGlobalMap);
        for (PageNumber page = 0; page < store.pageCount(); ++page)
            ASSERT_FALSE(map.contains(page)) << c.what << ", page " << page;
        DataPageEditor first(store, 1, 1);
        EXPECT_EQ(first.freeBytes(), store.page(1).bytes.u16(2)) << c.what;
        growing.free(*handedOut.begin());
        EXPECT_EQ(PageAllocator(store).allocate(), *handedOut.begin()) << c.what;
    }
}

TEST(PageAllocator, PagesOfWhichTheMapSaysNothingAreNeverTaken) {
    test::MemoryPageStore store = fileOf(700);
    // The map covers only a window, as some programs write it. Pages before and after the window may belong to a table.
    const std::vector<PageNumber> free = {130, 140};
    UsageMapRow(store, kGlobalMap).replace(UsageMap::inlineRow(128, free, 69));
    PageAllocator allocator(store);
    for (const PageNumber expected : {PageNumber{130}, PageNumber{140}, PageNumber{700}, PageNumber{701}})
        EXPECT_EQ(allocator.allocate(), expected);
    EXPECT_EQ(UsageMap::read(store, kGlobalMap).next(0), std::optional<PageNumber>(702));
}

/// Pages before and after the window of a row, as far as the row can reach. Pages in between stay used.
TEST(PageAllocator, APageFreedOutsideOfTheMapIsTakenAgain) {
    const struct {
        PageNumber first;
        std::vector<PageNumber> freed;
        bool isTaken;
    } cases[] = {
        {128, {77}, true}, {128, {640, 639, 6, 1500}, true}, {40'000, {39'100, 40'700}, true}, {40'000, {77}, false}};
    for (const auto& c : cases) {
        test::MemoryPageStore store = fileOf(41'000);
        UsageMapRow(store, kGlobalMap).replace(UsageMap::inlineRow(c.first, {}, 69));
        PageAllocator allocator(store);
        for (const PageNumber page : c.freed)
            allocator.free(page);
        EXPECT_EQ(DataPageEditor(store, 1, 1).freeBytes(), store.page(1).bytes.u16(2));
        std::set<PageNumber> taken;
        for (std::size_t i = 0; i < c.freed.size(); ++i)
            taken.insert(PageAllocator(store).allocate());
        EXPECT_EQ(taken == std::set<PageNumber>(c.freed.begin(), c.freed.end()), c.isTaken) << c.freed[0];
        EXPECT_GE(PageAllocator(store).allocate(), 41'000U) << c.freed[0];
    }
}

/// Maps are changed at random and compared with a std::set. Their rows share one page, which becomes full.
TEST(UsageMapWriter, HoldsAnySetOfPages) {
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    test::MemoryPageStore store = fileOf(70'000);
    PageAllocator allocator(store);
    const PageNumber page = allocator.allocate();
    clearDataPage(store.change(page), 0);
    constexpr std::size_t kMaps = 12;
    std::vector<std::set<PageNumber>> expected(kMaps);
    for (std::size_t i = 0; i < kMaps; ++i)
        appendRow(store.change(page), UsageMap::inlineRow(0, {}));
    for (int step = 0; step < 3000; ++step) {
        const std::size_t i = random() % kMaps;
        // Each map uses a wider part of the file than the one before.
        const PageNumber number = static_cast<PageNumber>(20'000 + random() % (100U << i)) % 70'000;
        UsageMapWriter map(store, allocator, {page, static_cast<std::uint8_t>(i)});
        ASSERT_EQ(map.contains(number), expected[i].contains(number)) << step;
        if (random() % 4 == 0) {
            map.clear(number);
            expected[i].erase(number);
        } else {
            map.set(number);
            expected[i].insert(number);
        }
        if (step % 500 == 0) {
            expected[i].clear();
            for (auto at = map.next(0); at; at = map.next(*at))
                map.clear(*at);
        }
    }
    int references = 0;
    for (std::size_t i = 0; i < kMaps; ++i) {
        const RowPointer row{page, static_cast<std::uint8_t>(i)};
        const UsageMap map = UsageMap::read(store, row);
        std::set<PageNumber> found;
        for (auto at = map.next(0); at; at = map.next(*at + 1))
            found.insert(*at);
        EXPECT_EQ(found, expected[i]) << i;
        references += kindOf(store, row);
    }
    EXPECT_GT(references, 2);
    EXPECT_LT(references, 10);
    const DataPageEditor editor(store, page, 0);
    EXPECT_EQ(editor.freeBytes(), store.page(page).bytes.u16(2));
}

TEST(UsageMap, ReportsImpossibleMaps) {
    PagesInMemory source;
    const PageNumber page = source.addDataPage(
        0, {fromHex("02 00 00 00 00"), fromHex("00 00"), UsageMap::referenceRow(std::vector<PageNumber>{77}), {}});
    const PageNumber foreign = source.addDataPage(5, {UsageMap::inlineRow(0, {})});
    for (const RowPointer row :
         {RowPointer{page, 0}, {page, 1}, {page, 2}, {page, 3}, {page, 9}, {foreign, 0}, {99, 0}})
        EXPECT_THROW(UsageMap::read(source, row), base::RuntimeError) << row.page << "/" << int{row.slot};
}

}  // namespace
}  // namespace jet
