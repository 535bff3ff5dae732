#include <gtest/gtest.h>

#include "jet/page/UsageMap.h"
#include "tests/jet/Hex.h"
#include "tests/jet/PagesInMemory.h"

namespace jet {
namespace {

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
