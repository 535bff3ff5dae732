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
#include "tests/jet/FileAtHand.h"
#include "tests/support/Environment.h"

namespace jet {
namespace {

/// The bytes of a page that are in use.
struct Area {
    PageNumber page;
    std::size_t from;
    std::size_t to;
    base::Text owner;           ///< name of the table
    std::uint8_t bits = 0xFF;   ///< the bits that may be changed
    bool isNoteEnough = false;  ///< where searches still find everything after a change
};

/// What a program that reads a whole table sees of it, except for the values and the order of the columns.
struct Answer {
    bool isError = false;
    std::set<base::Bytes> columns;
    std::size_t rows = 0;
    bool operator==(const Answer&) const = default;
};

Answer ask(PageSource& source, base::TextView name) {
    Answer answer;
    try {
        const auto table = openTable(source, name);
        if (!table) return answer;
        for (const Column& column : table->definition().columns)
            answer.columns.insert(sortKey(column.name));
        for (RowCursor cursor(*table); cursor.next(); ++answer.rows) {
            for (const Column& column : table->definition().columns)
                table->value(cursor.row().view, column);
        }
    } catch (const base::RuntimeError&) {
        return {true, {}, 0};
    }
    return answer;
}

std::vector<PageNumber> pagesOf(const UsageMap& map) {
    std::vector<PageNumber> pages;
    for (auto page = map.next(0); page; page = map.next(*page + 1))
        pages.push_back(*page);
    return pages;
}

Area rowArea(FileAtHand& file, RowPointer row, const base::Text& owner) {
    const auto bytes = DataPage(file.page(row.page)).slot(row.slot).bytes;
    const auto from = static_cast<std::size_t>(bytes.data() - file.at(row.page).data());
    return {row.page, from, from + bytes.size(), owner};
}

/// The header of a data page without the stamp.
void addHead(std::vector<Area>& areas, PageNumber page, std::size_t slots, const base::Text& owner) {
    areas.push_back({page, 0, 8, owner});
    areas.push_back({page, kSlotCountOffset, slotPlace(slots), owner});
}

/// A map, the header of its page, and the headers of the pages that it names.
void addMap(std::vector<Area>& areas, FileAtHand& file, RowPointer map, const base::Text& owner) {
    const auto pages = pagesOf(UsageMap::read(file, map));
    if (!pages.empty()) areas.push_back(rowArea(file, map, owner));
    addHead(areas, map.page, 0, owner);
    for (const PageNumber page : pages)
        if (file.page(page).kind() == PageKind::Data)
            addHead(areas, page, DataPage(file.page(page)).slotCount(), owner);
}

/// The pages of the catalog and of all definitions.
std::vector<Area> catalogAndDefinitions(FileAtHand& file) {
    std::vector<Area> areas;
    const Catalog catalog(file);
    for (const CatalogEntry& entry : catalog.entries())
        if (entry.isLocalTable()) areas.push_back({entry.id, 0, kPageSize - 8U - file.u16(entry.id, 2), entry.name});
    for (const PageNumber page : pagesOf(Table(file, CatalogEntry::ofCatalog()).ownedPages())) {
        const DataPage data(file.page(page));
        const std::size_t slots = slotPlace(data.slotCount());
        areas.push_back({page, 0, slots, u"MSysObjects"});
        areas.push_back({page, slots + data.freeBytes(), kPageSize, u"MSysObjects"});
    }
    return areas;
}

/// The fields of a definition that say where something is. Every change of them is a fault.
void addPlaces(std::vector<Area>& areas, const Area& whole, const TableDefinition& definition) {
    const auto add = [&](std::size_t from, std::size_t to, std::uint8_t bits = 0xFF) {
        areas.push_back({whole.page, from, to, whole.owner, bits});
    };
    add(0, DefinitionAt::kRowCount);
    add(43, DefinitionAt::kStatistics);
    std::size_t at = DefinitionAt::kStatistics + kStatisticsBytes * definition.indexes.size();
    for (std::size_t i = 0; i < definition.columns.size(); ++i, at += Column::kDescriptorBytes)
        add(at + 1, at + 7);
    for (const Column& column : definition.columns)
        at += 2 + 2 * column.name.size();
    for (std::size_t i = 0; i < definition.indexes.size(); ++i, at += IndexDefinition::kBytes) {
        add(at, at + 7);
        add(at + 34, at + 42);
        add(at + 46, at + 47, IndexDefinition::kAlways);
    }
    for (const LogicalIndex& index : definition.logicalIndexes) {
        const bool isSide = index.kind == LogicalIndex::Kind::ForeignKey;
        add(at, at + (isSide ? 24 : 4));
        // A tree that a relationship shares with an index keeps its name even if one of them no longer refers to it.
        if (!isSide && index.kind != LogicalIndex::Kind::PrimaryKey) add(at + 8, at + 13);
        at += LogicalIndex::kBytes;
    }
    for (const LogicalIndex& index : definition.logicalIndexes)
        at += 2 + 2 * index.name.size();
    add(at, whole.to);
}

void addIndexPages(std::vector<Area>& areas, FileAtHand& file, const TableDefinition& definition,
                   const base::Text& owner) {
    for (const IndexDefinition& index : definition.indexes) {
        addMap(areas, file, index.usageMap, owner);
        for (const PageNumber page : pagesOf(UsageMap::read(file, index.usageMap))) {
            const IndexPage entries(file.page(page), definition.page);
            const bool isLeaf = entries.isLeaf();
            areas.push_back({page, 0, 8, owner});
            // A single entry needs no prefix.
            areas.push_back({page, isLeaf ? 12U : 20U, entries.size() < 2 ? 24U : 26U, owner});
            areas.push_back({page, 27, 480U + 3616U - file.u16(page, 2), owner, 0xFF, !isLeaf});
        }
    }
}

/// The values that indexes, relationships and the catalog depend on, and the references of memos.
void addValues(std::vector<Area>& areas, FileAtHand& file, base::TextView name, const std::set<base::Text>& columns) {
    const Table table = *openTable(file, name);
    for (RowCursor cursor(table); cursor.next();) {
        for (const Column& column : table.definition().columns) {
            if (!columns.contains(column.name) || cursor.row().view.isNull(column)) continue;
            const auto bytes = cursor.row().view.stored(column);
            const auto from = static_cast<std::size_t>(bytes.data() - file.at(cursor.row().pointer.page).data());
            // The text itself, or where it is, follows the length; a chain also has a stamp.
            const bool isMemo = column.type == ColumnType::Memo;
            const std::size_t reference = bytes.size() > 12 ? 4 : (bytes[3] & 0x40U) != 0 ? 8 : 12;
            const std::size_t count = isMemo ? reference : bytes.size();
            // Other bits of a text can turn a letter into the same one in another case.
            const std::uint8_t bits = column.type == ColumnType::Text ? 0x07 : 0xFF;
            areas.push_back({cursor.row().pointer.page, from, from + count, base::Text(name), bits});
        }
    }
}

std::vector<Area> headerAndValues(FileAtHand& file) {
    std::vector<Area> areas = {{0, 0x18, 0x30, u"the header"}, {0, 0x98, 0xA0, u"the header"}};
    addValues(areas, file, u"Konten", {u"Notiz"});
    addValues(areas, file, u"MSysObjects", {u"Id", u"ParentId"});
    addValues(areas, file, u"MSysRelationships",
              {u"ccolumn", u"szColumn", u"szObject", u"szReferencedColumn", u"szReferencedObject", u"szRelationship"});
    return areas;
}

std::vector<Area> placesAndIndexes(FileAtHand& file) {
    std::vector<Area> areas;
    for (const Area& whole : catalogAndDefinitions(file)) {
        if (file.page(whole.page).kind() != PageKind::TableDefinition) continue;
        const TableDefinition definition = TableDefinition::read(file, whole.page);
        addPlaces(areas, whole, definition);
        addIndexPages(areas, file, definition, whole.owner);
        addMap(areas, file, definition.ownedPages, whole.owner);
        for (const LongValueMaps& maps : definition.longValueMaps)
            addMap(areas, file, maps.owned, whole.owner);
    }
    return areas;
}

class CheckerSweep : public testing::Test {
protected:
    /// Changes single bytes of the areas at random: TOLV_SWEEP * samples times, or every byte in every way if it is 0.
    template <typename Visit>
    void sweep(const std::vector<Area>& areas, std::size_t samples, Visit&& visit) {
        samples *= test::environmentNumber("TOLV_SWEEP", 1);
        if (samples == 0) {
            for (const Area& area : areas)
                for (std::size_t at = area.from; at < area.to; ++at)
                    for (unsigned change = 1; change < 256; ++change)
                        if ((change & ~unsigned{area.bits}) == 0) tryOne(area, at, change, visit);
            return;
        }
        std::vector<std::pair<const Area*, std::size_t>> places;
        for (const Area& area : areas)
            for (std::size_t at = area.from; at < area.to; ++at)
                places.emplace_back(&area, at);
        for (std::size_t i = 0; i < samples; ++i) {
            const auto& [area, at] = places[random_() % places.size()];
            unsigned change = 0;
            while ((change & area->bits) == 0)
                change = static_cast<unsigned>(random_() % 256);
            tryOne(*area, at, change & area->bits, visit);
        }
    }

    /// Changes each byte of the areas once.
    template <typename Visit>
    void sweepAll(const std::vector<Area>& areas, Visit&& visit) {
        for (const Area& area : areas)
            for (std::size_t at = area.from; at < area.to; ++at)
                sweep({{area.page, at, at + 1, area.owner, area.bits, area.isNoteEnough}}, 1, visit);
    }

    /// Whether a fault, or at least a finding, names the table or the page.
    bool isTold(const Area& area) {
        const CheckResult result = checkDatabase(file_, file_.bytes.size());
        return std::ranges::any_of(result.findings.kept(), [&](const Finding& finding) {
            const base::Text line = finding.line();
            return (area.isNoteEnough || finding.kind == Finding::Kind::Fault) &&
                   (line.find(u"'" + area.owner + u"'") != base::Text::npos ||
                    line.find(u"Seite " + base::decimal(area.page)) != base::Text::npos);
        });
    }

    bool isSound() { return checkDatabase(file_, file_.bytes.size()).isSound(); }

    FileAtHand file_{relatedTables()};

private:
    template <typename Visit>
    void tryOne(const Area& area, std::size_t at, unsigned change, Visit& visit) {
        SCOPED_TRACE("random seed " + std::to_string(seed_) + ", page " + std::to_string(area.page) + ", byte " +
                     std::to_string(at) + " of " + base::toUtf8(area.owner) + ", changed by " + std::to_string(change));
        std::uint8_t& byte = file_.at(area.page)[at];
        byte = static_cast<std::uint8_t>(byte ^ change);
        visit(area);
        byte = static_cast<std::uint8_t>(byte ^ change);
    }

    unsigned seed_ = test::environmentNumber("TOLV_RANDOM_SEED", std::random_device{}());
    std::mt19937 random_{seed_};
};

TEST_F(CheckerSweep, WhateverChangesWhatATableShowsIsAFault) {
    for (const auto& file : {std::pair(relatedTables(), std::vector<base::TextView>{u"Konten", u"Zweite"}),
                             {test::sampleFile({everyType()}), {u"Alles"}}}) {
        const std::vector<base::TextView>& tables = file.second;
        file_.bytes = file.first;
        const auto askAll = [&] {
            std::vector<Answer> answers(tables.size());
            std::ranges::transform(tables, answers.begin(), [&](base::TextView name) { return ask(file_, name); });
            return answers;
        };
        const std::vector<Answer> before = askAll();
        ASSERT_GE(before[0].rows, 20U);
        std::size_t changed = 0;
        sweep(catalogAndDefinitions(file_), 400, [&](const Area&) {
            if (askAll() == before) return;
            ++changed;
            EXPECT_FALSE(isSound());
        });
        EXPECT_GT(changed, 10U);
    }
}

TEST_F(CheckerSweep, EveryChangedPlaceInADefinitionOfTwoPagesIsReported) {
    file_.bytes = test::sampleFile({everyType()});
    const TableDefinition definition = openTable(file_, u"Alles")->definition();
    std::vector<Area> areas;
    addPlaces(areas, {definition.page, 0, kPageSize, u"Alles"}, definition);
    // The names of indexes, and what follows them, are on the second page.
    std::erase_if(areas, [](const Area& area) { return area.to >= kPageSize || area.from == 0; });
    sweepAll(areas, [&](const Area& area) { EXPECT_TRUE(isTold(area)); });
}

TEST_F(CheckerSweep, EveryChangedPlaceOrIndexEntryIsReported) {
    sweepAll(headerAndValues(file_), [&](const Area& area) { EXPECT_TRUE(isTold(area)); });
    sweep(placesAndIndexes(file_), 300, [&](const Area& area) { EXPECT_TRUE(isTold(area)); });
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

/// A change in a tree of three levels may stay unnoticed only if the walk still gives every row in the same order.
TEST_F(CheckerSweep, ADamagedIndexLosesNoRow) {
    file_.bytes = deepTrees();
    const Table table = *openTable(file_, u"Tief");
    std::size_t noticed = 0;
    for (const IndexDefinition& index : table.definition().indexes) {
        std::vector<Area> areas;
        for (const PageNumber page : pagesOf(UsageMap::read(file_, index.usageMap))) {
            areas.push_back({page, 0, 60, table.name()});
            areas.push_back({page, 480, kPageSize - file_.u16(page, 2), table.name()});
        }
        const auto expected = rowsByIndex(table, index, true);
        sweep(areas, 200, [&](const Area&) {
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

/// The map has lost pages, or names wrong ones.
TEST_F(CheckerSweep, ADamagedMapDoesNotMakeATableShorter) {
    for (const base::TextView name : {u"Konten", u"Zweite", u"MSysObjects"}) {
        const base::TextView asked = name == u"Zweite" ? u"Zweite" : u"Konten";
        const Answer before = ask(file_, asked);
        const Area map = rowArea(file_, openTable(file_, name)->definition().ownedPages, base::Text(name));
        sweep({map}, 40, [&](const Area&) {
            const Answer now = ask(file_, asked);
            EXPECT_TRUE(now.isError || now == before);
        });
        // Without the last pages, which hold the tables' indexes, all rows are still there.
        FileAtHand cut(file_);
        for (std::size_t sizeBytes = 0; sizeBytes < file_.bytes.size(); sizeBytes += kPageSize) {
            cut.bytes.assign(file_.bytes.begin(), file_.bytes.begin() + static_cast<std::ptrdiff_t>(sizeBytes));
            const Answer now = ask(cut, asked);
            EXPECT_TRUE(now.isError || now == before) << sizeBytes;
        }
    }
}

}  // namespace
}  // namespace jet
