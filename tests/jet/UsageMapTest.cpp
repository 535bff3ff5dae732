#include <gtest/gtest.h>

#include "jet/page/UsageMap.h"
#include "tests/jet/Hex.h"
#include "tests/jet/PagesInMemory.h"

namespace jet {
namespace {

std::vector<PageNumber> pagesOf(const UsageMap& map) {
    std::vector<PageNumber> pages;
    for (auto page = map.next(0); page; page = map.next(*page + 1))
        pages.push_back(*page);
    return pages;
}

TEST(UsageMap, ReadsReferencesToBitmapPages) {
    PagesInMemory source;
    base::Bytes bitmap(kPageSize, 0);
    bitmap[0] = 5, bitmap[1] = 1;
    bitmap[4] = 0x02;
    bitmap[kPageSize - 1] = 0x80;
    const PageNumber first = source.add(bitmap);
    const PageNumber third = source.add(bitmap);
    const PageNumber page = source.addDataPage(0, {UsageMap::referenceRow(std::vector<PageNumber>{first, 0, third})});
    const UsageMap map = UsageMap::read(source, {page, 0});
    EXPECT_EQ(pagesOf(map), (std::vector<PageNumber>{1, 32735, 2 * 32736 + 1, 3 * 32736 - 1}));
    EXPECT_TRUE(UsageMap::read(source, {}).empty()) << "no map at all";
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
