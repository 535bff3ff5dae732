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
#include "tests/jet/DefinitionPlaces.h"
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
    const auto at = [&](DefinitionPart part, std::size_t i = 0) { return placeInDefinition(definition, part, i); };
    const auto add = [&](std::size_t from, std::size_t to, std::uint8_t bits = 0xFF) {
        areas.push_back({whole.page, from, to, whole.owner, bits});
    };
    add(0, DefinitionAt::kRowCount);
    add(DefinitionAt::kVariableEver, DefinitionAt::kStatistics);
    for (std::size_t i = 0; i < definition.columns.size(); ++i)
        add(at(DefinitionPart::Column, i) + ColumnAt::kMark, at(DefinitionPart::Column, i) + ColumnAt::kVariableIndex);
    for (std::size_t i = 0; i < definition.indexes.size(); ++i) {
        const std::size_t block = at(DefinitionPart::Index, i);
        add(block, block + IndexBlockAt::columnNumber(1));
        add(block + IndexBlockAt::kUsageMap, block + IndexBlockAt::kRootPage + 4);
        add(block + IndexBlockAt::kFlags, block + IndexBlockAt::kFlags + 1, IndexDefinition::kAlways);
    }
    for (std::size_t i = 0; i < definition.logicalIndexes.size(); ++i) {
        const LogicalIndex::Kind kind = definition.logicalIndexes[i].kind;
        const std::size_t record = at(DefinitionPart::LogicalIndex, i);
        const bool isSide = kind == LogicalIndex::Kind::ForeignKey;
        add(record, record + (isSide ? LogicalIndexAt::kKind + 1 : LogicalIndexAt::kNumber));
        // A tree that a relationship shares with an index keeps its name even if one of them no longer refers to it.
        if (!isSide && kind != LogicalIndex::Kind::PrimaryKey)
            add(record + LogicalIndexAt::kDataBlock, record + LogicalIndexAt::kPartnerNumber);
    }
    add(at(DefinitionPart::Maps), whole.to);
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

std::string linesOf(const CheckResult& result) {
    std::string lines;
    for (const Finding& finding : result.findings.kept())
        lines += base::toUtf8(finding.line()) + "\n";
    return lines;
}

/// The faults that the checker finds are in damages.txt.
TEST_F(CheckerSweep, FindsNothingInSoundFiles) {
    const CheckResult result = checkDatabase(file_, file_.bytes.size());
    EXPECT_EQ(result.counts.tables, 7U);
    EXPECT_EQ(result.counts.longValues, 4U + 1U + 3U) << "memos, a query, and the properties of three tables";
    for (const Seed& seed : seeds()) {
        if (seed.name.find('.') != std::string::npos) continue;  // made by other programs
        FileAtHand other(seed.file);
        EXPECT_EQ(linesOf(checkDatabase(other, other.bytes.size())), "") << seed.name;
    }
}

TEST_F(CheckerSweep, KeepsABoundedNumberOfFindings) {
    for (std::size_t user = 0; user < 256; ++user)
        base::putU16(file_.at(0), 0xE00 + 2 * user, 0);
    std::ranges::fill(file_.at(openTable(file_, u"Konten")->definition().indexes[0].rootPage), std::uint8_t{0});
    const CheckResult result = checkDatabase(file_, file_.bytes.size());
    EXPECT_GT(result.findings.faultCount(), 256U);
    EXPECT_LE(result.findings.kept().size(), 2 * Findings::kMaxKept);
    EXPECT_LT(result.findings.faultCount(), 300U) << "a lost tree is told in a few sentences";
}

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
