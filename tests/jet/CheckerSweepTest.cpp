#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <set>

#include "jet/check/Checker.h"
#include "jet/index/IndexedRow.h"
#include "jet/page/UsageMap.h"
#include "jet/table/Catalog.h"
#include "jet/table/Table.h"
#include "jet/tree/IndexCursor.h"
#include "tests/fuzz/Seeds.h"
#include "tests/jet/EditableFile.h"
#include "tests/support/Environment.h"

namespace jet {
namespace {

/// The bytes of a page that are in use.
struct Area {
    PageNumber page;
    std::size_t from;
    std::size_t to;
};

/// What a program that reads a whole table sees of it, except for the values and the order of the columns.
struct TableContents {
    bool isError = false;
    std::set<base::Bytes> columns;
    std::size_t rows = 0;
    bool operator==(const TableContents&) const = default;
};

TableContents readContents(PageSource& source, base::TextView name) {
    TableContents contents;
    try {
        const auto table = openTable(source, name);
        if (!table) return contents;
        for (const Column& column : table->definition().columns)
            contents.columns.insert(sortKey(column.name));
        for (RowCursor cursor(*table); cursor.next(); ++contents.rows) {
            for (const Column& column : table->definition().columns)
                table->value(cursor.row().view, column);
        }
    } catch (const base::RuntimeError&) {
        return {true, {}, 0};
    }
    return contents;
}

std::vector<PageNumber> pagesOf(const UsageMap& map) {
    std::vector<PageNumber> pages;
    for (auto page = map.next(0); page; page = map.next(*page + 1))
        pages.push_back(*page);
    return pages;
}

Area rowArea(EditableFile& file, RowPointer row) {
    const auto bytes = DataPage(file.page(row.page)).slot(row.slot).bytes;
    const auto from = static_cast<std::size_t>(bytes.data() - file.at(row.page).data());
    return {row.page, from, from + bytes.size()};
}

/// The pages of the catalog and of all definitions.
std::vector<Area> catalogAndDefinitions(EditableFile& file) {
    std::vector<Area> areas;
    const Catalog catalog(file);
    for (const CatalogEntry& entry : catalog.entries())
        if (entry.isLocalTable()) areas.push_back({entry.id, 0, kPageSize - 8U - file.u16(entry.id, 2)});
    for (const PageNumber page : pagesOf(Table(file, CatalogEntry::ofCatalog()).ownedPages())) {
        const DataPage data(file.page(page));
        const std::size_t slots = slotPlace(data.slotCount());
        areas.push_back({page, 0, slots});
        areas.push_back({page, slots + data.freeBytes(), kPageSize});
    }
    return areas;
}

class CheckerSweep : public testing::Test {
protected:
    /// Changes single bytes of the areas at random: TOLV_SWEEP * samples times, or every byte in every way if it is 0.
    template <typename Visit>
    void sweep(const std::vector<Area>& areas, std::size_t samples, Visit&& visit) {
        samples *= test::environmentNumber("TOLV_SWEEP", 1);
        std::vector<std::pair<PageNumber, std::size_t>> places;
        for (const Area& area : areas)
            for (std::size_t at = area.from; at < area.to; ++at)
                places.emplace_back(area.page, at);
        for (std::size_t i = 0; i < (samples == 0 ? 255 * places.size() : samples); ++i) {
            const auto& [page, at] = places[samples == 0 ? i / 255 : random_() % places.size()];
            const std::size_t change = 1 + (samples == 0 ? i : random_()) % 255;
            SCOPED_TRACE("random seed " + std::to_string(seed_) + ", page " + std::to_string(page) + ", byte " +
                         std::to_string(at) + ", changed by " + std::to_string(change));
            std::uint8_t& byte = file_.at(page)[at];
            byte = static_cast<std::uint8_t>(byte ^ change);
            visit();
            byte = static_cast<std::uint8_t>(byte ^ change);
        }
    }

    bool isSound() { return checkDatabase(file_, file_.bytes.size()).isSound(); }

    EditableFile file_{relatedTables()};

private:
    unsigned seed_ = test::environmentNumber("TOLV_RANDOM_SEED", std::random_device{}());
    std::mt19937 random_{seed_};
};

/// damages.txt lists the faults that the checker must find; other sound files are checked there and in tests/fuzz.
TEST_F(CheckerSweep, CountsWhatItHasChecked) {
    const CheckResult result = checkDatabase(file_, file_.bytes.size());
    EXPECT_EQ(result.counts.tables, 7U);
    EXPECT_EQ(result.counts.longValues, 4U + 1U + 3U) << "memos, a query, and the properties of three tables";
    EXPECT_TRUE(result.findings.kept().empty());
}

TEST_F(CheckerSweep, KeepsABoundedNumberOfFindings) {
    for (std::size_t user = 0; user < 256; ++user)
        base::putU16(file_.at(0), 0xE00 + 2 * user, 0);
    std::ranges::fill(file_.at(openTable(file_, u"Konten")->definition().indexes[0].rootPage), std::uint8_t{0});
    const CheckResult result = checkDatabase(file_, file_.bytes.size());
    EXPECT_GT(result.findings.faultCount(), 256U);
    EXPECT_LE(result.findings.kept().size(), 2 * Findings::kMaxKept);
    EXPECT_LT(result.findings.faultCount(), 300U) << "a lost tree gives only a few findings";
}

TEST_F(CheckerSweep, EveryDamageThatChangesWhatATableShowsIsAFault) {
    for (const auto& file : {std::pair(relatedTables(), std::vector<base::TextView>{u"Konten", u"Zweite"}),
                             {test::sampleFile({everyType()}), {u"Alles"}}}) {
        const std::vector<base::TextView>& tables = file.second;
        file_.bytes = file.first;
        const auto readAllContents = [&] {
            std::vector<TableContents> all(tables.size());
            std::ranges::transform(tables, all.begin(), [&](base::TextView name) { return readContents(file_, name); });
            return all;
        };
        const std::vector<TableContents> before = readAllContents();
        ASSERT_GE(before[0].rows, 20U);
        std::size_t changed = 0;
        sweep(catalogAndDefinitions(file_), 400, [&] {
            if (readAllContents() == before) return;
            ++changed;
            EXPECT_FALSE(isSound());
        });
        EXPECT_GT(changed, 10U);
    }
}

/// The rows in the order of an index, walked from either end.
std::vector<RowPointer> rowsByIndex(const Table& table, const IndexDefinition& index, bool forwards) {
    std::vector<RowPointer> rows;
    IndexCursor cursor(table.source(), table.definition().page, index.rootPage);
    for (bool there = forwards ? cursor.first() : cursor.last(); there;
         there = forwards ? cursor.next() : cursor.previous())
        rows.push_back(rowAtEntry(table, index, cursor).pointer);
    return rows;
}

/// A damage may stay unnoticed only if walking the index still gives every row in the same order.
TEST_F(CheckerSweep, ADamagedIndexDoesNotLoseRowsUnnoticed) {
    file_.bytes = deepTrees();
    const Table table = *openTable(file_, u"Tief");
    std::size_t noticed = 0;
    for (const IndexDefinition& index : table.definition().indexes) {
        std::vector<Area> areas;
        for (const PageNumber page : pagesOf(UsageMap::read(file_, index.usageMap))) {
            areas.push_back({page, 0, 60});
            areas.push_back({page, 480, kPageSize - file_.u16(page, 2)});
        }
        const auto expected = rowsByIndex(table, index, true);
        sweep(areas, 200, [&] {
            for (const bool forwards : {true, false}) {
                try {
                    auto found = rowsByIndex(table, index, forwards);
                    if (!forwards) std::ranges::reverse(found);
                    EXPECT_EQ(found, expected);
                } catch (const base::RuntimeError&) {
                    ++noticed;
                }
            }
        });
    }
    EXPECT_GT(noticed, 200U);
}

/// A node may have no tail, so only the links between the leaves show that it has lost it.
TEST_F(CheckerSweep, ANodeWithoutItsTailDoesNotLoseRowsUnnoticed) {
    file_.bytes = deepTrees();
    const Table table = *openTable(file_, u"Tief");
    std::size_t nodes = 0;
    for (const IndexDefinition& index : table.definition().indexes) {
        const IndexPage root(file_.page(index.rootPage), table.definition().page);
        if (root.isLeaf() || root.tail() == 0) continue;
        ++nodes;
        base::putU32(file_.at(index.rootPage), kIndexTailOffset, 0);
        for (const bool forwards : {true, false})
            EXPECT_THROW(rowsByIndex(table, index, forwards), base::RuntimeError);
    }
    EXPECT_GT(nodes, 0U);
}

/// The map has lost pages, or names wrong ones.
TEST_F(CheckerSweep, ADamagedMapDoesNotLoseRowsUnnoticed) {
    for (const base::TextView name : {u"Konten", u"Zweite", u"MSysObjects"}) {
        const base::TextView readName = name == u"Zweite" ? u"Zweite" : u"Konten";
        const TableContents before = readContents(file_, readName);
        const Area map = rowArea(file_, openTable(file_, name)->definition().ownedPages);
        sweep({map}, 40, [&] {
            const TableContents now = readContents(file_, readName);
            EXPECT_TRUE(now.isError || now == before);
        });
        // The file is cut off after each page. Some cuts lose no row, because the last pages hold only indexes.
        EditableFile cut(file_);
        for (std::size_t sizeBytes = 0; sizeBytes < file_.bytes.size(); sizeBytes += kPageSize) {
            cut.bytes.assign(file_.bytes.begin(), file_.bytes.begin() + static_cast<std::ptrdiff_t>(sizeBytes));
            const TableContents now = readContents(cut, readName);
            EXPECT_TRUE(now.isError || now == before) << sizeBytes;
        }
    }
}

}  // namespace
}  // namespace jet
