#include "jet/salvage/TablePages.h"

#include <algorithm>

#include "base/RuntimeError.h"
#include "jet/salvage/DamagedRow.h"
#include "jet/tree/IndexCursor.h"

namespace jet {
namespace {

/// Calls visit(row) for the entries of an index from the first to the last.
/// @return whether its last entry was reached
template <typename Visit>
bool walkIndex(DamagedFile& file, const TableDefinition& definition, const IndexDefinition& index, Visit&& visit) {
    try {
        IndexCursor cursor(file, definition.page, index.rootPage);
        for (bool there = cursor.first(); there; there = cursor.next())
            visit(cursor.row());
        return true;
    } catch (const base::RuntimeError&) {
        return false;
    }
}

template <typename Visit>
void walkLeaf(DamagedFile& file, PageNumber page, PageNumber definitionPage, Visit&& visit) {
    try {
        const IndexPage leaf(file.page(page), definitionPage);
        for (std::size_t i = 0; i < leaf.size(); ++i)
            visit(rowOfEntry(leaf.entry(i)));
    } catch (const base::RuntimeError&) {
        return;  // other entries of the table, if any, are on other pages
    }
}

}  // namespace

TablePages::TablePages(DamagedFile& file, const PageScan& scan, std::span<const DamagedDefinition> tables)
    : file_(file),
      scan_(scan),
      tables_(tables),
      pages_(tables.size()),
      lost_(tables.size()),
      hasAllRows_(tables.size()),
      entries_(tables.size()) {
    readClaims();
    countRows();
    for (PageNumber page = 1; page < scan.pageCount(); ++page)
        settle(page);
    findStrays();
    for (auto& pages : pages_)
        std::ranges::sort(pages);
}

void TablePages::readClaims() {
    claims_.byHeader.resize(scan_.pageCount(), kNone);
    claims_.byMap.resize(scan_.pageCount(), kNone);
    claims_.hasMap.resize(tables_.size());
    std::vector<std::uint16_t> tableOn(scan_.pageCount(), kNone);
    for (std::size_t i = 0; i < tables_.size(); ++i) {
        // A file that was cut off has not even the pages of the system tables.
        if (tables_[i].definition.page < tableOn.size())
            tableOn[tables_[i].definition.page] = static_cast<std::uint16_t>(i);
    }
    for (PageNumber page = 1; page < scan_.pageCount(); ++page) {
        const std::uint32_t owner = scan_.owner(page);
        if (scan_.kind(page) == PageKind::Data && owner < scan_.pageCount()) claims_.byHeader[page] = tableOn[owner];
    }
    for (std::size_t i = 0; i < tables_.size(); ++i) {
        const auto map = readDamagedMap(file_, tables_[i].definition.ownedPages).pages;
        claims_.hasMap[i] = map.has_value();
        if (!map) continue;
        for (const PageNumber page : *map) {
            auto& first = claims_.byMap[page];
            if (first != kNone) claims_.byFurtherMaps.emplace(page, claims_.byHeader[page] == i ? first : i);
            if (first == kNone || claims_.byHeader[page] == i) first = static_cast<std::uint16_t>(i);
        }
    }
}

std::size_t TablePages::rowsOn(PageNumber page) const {
    const DamagedDataPage data = DamagedDataPage::read(file_, page);
    std::size_t rows = 0;
    for (std::size_t i = 0; i < data.slotCount(); ++i) {
        if (isRow(data.slot(i).state)) ++rows;
    }
    return rows;
}

/// Finds out which tables have as many rows on the pages of their maps as the definition counts. Only tables with
/// further pages are looked at.
void TablePages::countRows() {
    std::vector<bool> isNeeded(tables_.size());
    for (PageNumber page = 1; page < scan_.pageCount(); ++page) {
        const std::uint16_t header = claims_.byHeader[page];
        const std::uint16_t map = claims_.byMap[page];
        if (header == map) continue;
        if (header != kNone) isNeeded[header] = true;
        if (map != kNone) isNeeded[map] = true;
    }
    std::vector<std::size_t> rows(tables_.size());
    for (PageNumber page = 1; page < scan_.pageCount(); ++page) {
        const std::uint16_t header = claims_.byHeader[page];
        if (header != kNone && header == claims_.byMap[page] && isNeeded[header]) rows[header] += rowsOn(page);
    }
    for (std::size_t i = 0; i < tables_.size(); ++i)
        hasAllRows_[i] = claims_.hasMap[i] && rows[i] == tables_[i].definition.rowCount;
}

void TablePages::settle(PageNumber page) {
    const std::uint16_t header = claims_.byHeader[page];
    const std::uint16_t map = claims_.byMap[page];
    if (header != kNone && header == map) {
        pages_[header].push_back(page);
    } else if (header != kNone && mayHaveRowsOf(page, header) && !isFreed(page, header)) {
        const Fit fit = fitOf(page, header);
        const bool isOfMap = map != kNone && !fit.isGood() && fitOf(page, map).isGood();
        if (isOfMap)
            pages_[map].push_back(page);
        else if (fit.good > 0 || fit.bad == 0)
            pages_[header].push_back(page);
        else
            lost_[header].push_back(page);
    } else if (map != kNone) {
        settleByMaps(page);
    }
}

/// The page goes to the table whose rows it has. If it has those of none, a bit of a map is wrong, or the page is lost.
void TablePages::settleByMaps(PageNumber page) {
    std::vector<std::size_t> candidates{claims_.byMap[page]};
    const auto [begin, end] = claims_.byFurtherMaps.equal_range(page);
    for (auto further = begin; further != end; ++further)
        candidates.push_back(further->second);
    std::erase_if(candidates, [&](std::size_t table) { return !mayHaveRowsOf(page, table); });
    if (candidates.empty()) return;
    const auto best =
        std::ranges::max_element(candidates, {}, [&](std::size_t table) { return fitOf(page, table).good; });
    const Fit fit = fitOf(page, *best);
    const PageKind kind = scan_.kind(page);
    if (fit.good > 0 && fit.good >= fit.bad)
        pages_[*best].push_back(page);
    else if (kind == PageKind::Header || kind > PageKind::UsageBitmap)
        lost_[*best].push_back(page);
}

/// Whether the table lacks rows, and no index shows that they are not on this page. Neither knows the data of moved
/// rows; it counts only if a row points to it.
bool TablePages::mayHaveRowsOf(PageNumber page, std::size_t table) {
    if (rowsOn(page) == 0) return true;
    if (hasAllRows_[table]) return false;
    const Entries& entries = entriesOf(table);
    return !entries.isComplete || entries.pages[page];
}

/// Whether the global map calls the page free, and no index contradicts it.
bool TablePages::isFreed(PageNumber page, std::size_t table) {
    return scan_.isFree(page) && !entriesOf(table).pages[page];
}

const TablePages::Entries& TablePages::entriesOf(std::size_t table) {
    auto& known = entries_[table];
    if (known) return *known;
    const TableDefinition& definition = tables_[table].definition;
    Entries& entries = known.emplace();
    entries.pages.resize(scan_.pageCount());
    bool isSound = true;
    const auto add = [&](RowPointer row) {
        const bool isThere = row.page < entries.pages.size();
        if (isThere) entries.pages[row.page] = true;
        isSound = isSound && isThere && (claims_.byHeader[row.page] == table || claims_.byMap[row.page] == table);
    };
    for (const IndexDefinition& index : definition.indexes) {
        isSound = true;
        const bool isRead = walkIndex(file_, definition, index, add);
        entries.isComplete = entries.isComplete || (isRead && isSound && !index.ignoresNulls());
    }
    if (entries.isComplete) return entries;
    for (PageNumber page = 1; page < scan_.pageCount(); ++page) {
        if (scan_.kind(page) == PageKind::IndexLeaf && scan_.owner(page) == definition.page && !scan_.isFree(page))
            walkLeaf(file_, page, definition.page, add);
    }
    return entries;
}

/// Pages that neither header nor map gives to a table: their header was damaged, and so was the map. The indexes may
/// know them.
void TablePages::findStrays() {
    for (PageNumber page = 2; page < scan_.pageCount(); ++page) {
        const bool isData = scan_.kind(page) == PageKind::Data;
        const bool isOfOtherUse =
            isData ? scan_.owner(page) == 0 || scan_.owner(page) == kLongValueOwner
                   : scan_.kind(page) >= PageKind::TableDefinition && scan_.kind(page) <= PageKind::UsageBitmap;
        if (claims_.byHeader[page] != kNone || claims_.byMap[page] != kNone || isOfOtherUse || scan_.isFree(page))
            continue;
        std::vector<std::size_t> owners;
        for (std::size_t table = 0; table < tables_.size(); ++table) {
            if (fitOf(page, table).isGood() && entriesOf(table).pages[page]) owners.push_back(table);
        }
        if (owners.size() == 1)
            pages_[owners[0]].push_back(page);
        else if (isData)
            strange_.push_back(page);
    }
}

/// How many rows of the page can be read as rows of the table.
TablePages::Fit TablePages::fitOf(PageNumber page, std::size_t table) const {
    const DamagedDataPage data = DamagedDataPage::read(file_, page);
    Fit fit;
    DamagedRow row;
    base::Text reason;
    for (std::size_t i = 0; i < data.slotCount(); ++i) {
        const DamagedSlot slot = data.slot(i);
        if (slot.state != SlotState::Live && slot.state != SlotState::Hidden) continue;
        const RowPointer place{page, static_cast<std::uint8_t>(i)};
        const bool isRead = readDamagedRow(file_, tables_[table].definition, slot, place, row, reason);
        ++(isRead && row.lost.empty() ? fit.good : fit.bad);
    }
    return fit;
}

}  // namespace jet
