#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <set>
#include <string>
#include <vector>

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
test::MemoryPageStore fileOf(PageNumber pages) {
    test::MemoryPageStore store(test::sampleFile({}));
    store.extendTo(std::max(pages, store.pageCount()));
    return store;
}

std::uint8_t kindOf(test::MemoryPageStore& store, RowPointer map) {
    return DataPage(store.page(map.page)).slot(map.slot).bytes[0];
}

/// The global map as some program has left it, and the pages that the test may free.
struct Start {
    const char* what;
    PageNumber pages = 0;                   ///< length of the file
    PageNumber first = 0;                   ///< of the map's row
    std::size_t rowBytes = 69;              ///< of the map's row
    std::vector<PageNumber> free = {};      ///< in the file; all pages after it are free if the row has them
    int kind = 0;                           ///< of the map in the end
    PageNumber freedFrom = 0, freedTo = 0;  ///< pages of the file of which some are freed
    bool areTooFar = false;                 ///< they are too far away for the map's row, so they are lost
};

/// Takes and frees pages at random.
void takeAndFree(const Start& start, std::mt19937& random) {
    test::MemoryPageStore store = fileOf(start.pages);
    std::vector<PageNumber> free = start.free;
    for (PageNumber page = store.pageCount(); page < start.first + 8 * (start.rowBytes - 5); ++page)
        free.push_back(page);
    ASSERT_TRUE(UsageMapRow(store, kGlobalMap).replace(UsageMap::inlineRow(start.first, free, start.rowBytes)));
    std::set<PageNumber> known(start.free.begin(), start.free.end());
    std::vector<PageNumber> freeable;
    for (PageNumber page = start.freedFrom; page < start.freedTo; page += 1 + static_cast<PageNumber>(random() % 40))
        freeable.push_back(page);
    PageAllocator allocator(store);
    for (int step = 0; step < 300; ++step) {
        if (freeable.empty() || random() % 5 < 3) {
            // If no page is free, the file grows: first comes the new page, then the pages that the map needs.
            const PageNumber lowest = known.empty() ? store.pageCount() : *known.begin();
            const PageNumber page = random() % 2 == 0 ? allocator.allocate() : PageAllocator(store).allocate();
            ASSERT_EQ(page, lowest);
            EXPECT_TRUE(store.page(page).bytes.u32(0) == 0 && store.page(page).bytes.u8(100) == 0);
            store.change(page)[0] = store.change(page)[100] = 7;
            known.erase(page);
            freeable.push_back(page);
        } else {
            std::swap(freeable[random() % freeable.size()], freeable.back());
            const PageNumber page = freeable.back();
            freeable.pop_back();
            const std::uint8_t rest = store.page(page).bytes.u8(100);
            allocator.free(page);
            EXPECT_TRUE(store.page(page).bytes.u32(0) == 0 && store.page(page).bytes.u8(100) == rest);
            const bool isLost = start.areTooFar && page < start.freedTo;
            if (!isLost) known.insert(page);
            for (const PageNumber wrong : {page, PageNumber{0}, PageNumber{5}, store.pageCount()})
                EXPECT_EQ(errorOf([&] { allocator.free(wrong); }) == "no error", isLost && wrong == page) << wrong;
        }
    }
    const UsageMap map = UsageMap::read(store, kGlobalMap);
    for (PageNumber page = 0; page < store.pageCount(); ++page)
        ASSERT_EQ(map.contains(page), known.contains(page)) << page;
    EXPECT_EQ(kindOf(store, kGlobalMap), start.kind);
    EXPECT_EQ(DataPageEditor(store, 1, 1).freeBytes(), store.page(1).bytes.u16(2));
}

TEST(PageAllocator, TakesTheLowestFreePageAndNoOther) {
    const Start starts[] = {
        {"a new file"},
        {"a row that must become longer", 490},
        {"a row of the greatest length", 31'780, 0, 4001},
        {"page 1 is full", 32'032, 0, 4009, {}, 1},
        {"page 1 is full, just before the second bitmap", 32'700, 0, 4009, {}, 1},
        {"page 1 is full, and the first bitmap's page is in the second bitmap", 32'735, 0, 4009, {}, 1},
        // Some programs write a map that covers only a window. Pages before and after it may belong to a table.
        {"a window", 700, 128, 69, {130, 140}},
        {"pages freed before and after the window", 1600, 128, 69, {}, 0, 6, 1600},
        {"pages freed around a window near the end", 41'000, 40'000, 69, {}, 0, 39'100, 40'700},
        {"pages freed far before the window", 41'000, 40'000, 69, {}, 0, 77, 1000, true},
    };
    const unsigned seed = std::random_device{}();
    std::mt19937 random(seed);
    for (const Start& start : starts) {
        SCOPED_TRACE(std::string(start.what) + ", random seed " + std::to_string(seed));
        takeAndFree(start, random);
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
