#include <algorithm>
#include <gtest/gtest.h>

#include "jet/table/Catalog.h"
#include "jet/table/Table.h"
#include "tests/fuzz/Seeds.h"
#include "tests/support/MemoryPageStore.h"

namespace jet {
namespace {

/// tests/jet/damages.txt has damages to definitions of a single page.
TEST(TableDefinition, IsRefusedIfTheChainOfItsPagesIsBroken) {
    test::MemoryPageStore store(test::sampleFile({everyType()}));
    const std::vector<PageNumber> chain = openTable(store, u"Alles")->definition().chain;
    ASSERT_EQ(chain.size(), 2U);
    for (const PageNumber next : {chain[0], PageNumber{0}, PageNumber{2}, chain[1] + 1, PageNumber{0xFFFFFF}}) {
        base::putU32(store.change(chain[0]), 4, next);
        EXPECT_THROW(TableDefinition::read(store, chain[0]), base::RuntimeError) << next;
    }
    base::putU32(store.change(chain[0]), 4, chain[1]);
    EXPECT_EQ(TableDefinition::read(store, chain[0]).columns.size(), 15U);
    base::putU32(store.change(chain[1]), 4, chain[0]);
    base::putU32(store.change(chain[0]), 8, 3 * kPageSize);
    EXPECT_THROW(TableDefinition::read(store, chain[0]), base::RuntimeError) << "a ring";
}

TEST(TableDefinition, TakesNoMorePagesThanItsBytesNeed) {
    for (std::size_t bytes = 4000; bytes < 13'000; ++bytes) {
        const std::vector<PageNumber> chain(definitionPageCount(bytes));
        const auto pages = definitionPages(base::Bytes(bytes, 0xA5), chain);
        EXPECT_EQ(pages.back()[8], 0xA5) << bytes;
        std::size_t held = 8;  // the bytes of the first page's header
        for (const base::Bytes& page : pages)
            held += static_cast<std::size_t>(std::count(page.begin() + 8, page.end(), 0xA5));
        EXPECT_EQ(held, bytes);
    }
}

TEST(TableDefinition, ListsItsColumnsInDisplayOrder) {
    TableDefinition definition;
    definition.columns.resize(3);
    for (std::uint16_t number = 0; number < 3; ++number) {
        definition.columns[number].number = number;
        definition.columns[number].displayPosition = number == 0 ? 9 : 4;
    }
    EXPECT_EQ(definition.columnsForDisplay()[0]->number, 1);
    EXPECT_EQ(definition.columnsForDisplay()[2]->number, 0);
}

}  // namespace
}  // namespace jet
