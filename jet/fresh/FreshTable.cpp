#include "jet/fresh/FreshTable.h"

#include <algorithm>
#include <cassert>
#include <utility>

#include "jet/Errors.h"
#include "jet/index/IndexKey.h"
#include "jet/page/DataPage.h"
#include "jet/table/LongValue.h"
#include "jet/table/RowCodec.h"
#include "jet/value/ValueCodec.h"

namespace jet {
namespace {

/// Whether it is certain which key the original engine gives the value. Only such a key may be written.
bool keyIsCertain(const Column& column, const base::Value& value) {
    const auto* text = std::get_if<base::Text>(&value);
    return text == nullptr || sortKeyIsCertain(*text, column.textOrder);
}

bool isNullOrFalse(const Column& column, const Cell& cell) {
    return !cell || (column.type == ColumnType::Boolean && cell->at(0) == 0);
}

/// The definition as it was before columns were added that the row does not use. Readers take them for null. Needed for
/// rows that were full at that time: with the later columns they would not fit on a page.
TableDefinition withoutLastNulls(TableDefinition definition, std::span<const Cell> cells) {
    std::uint16_t variableColumns = 1;  // a row has none only if its table never had any
    definition.columnsEver = 1;
    for (const Column& column : definition.columns) {
        if (isNullOrFalse(column, cells[column.number])) continue;
        definition.columnsEver = std::max<std::uint16_t>(definition.columnsEver, column.number + 1);
        if (!column.isFixed()) variableColumns = std::max<std::uint16_t>(variableColumns, column.variableIndex + 1);
    }
    definition.variableColumnsEver = std::min(definition.variableColumnsEver, variableColumns);
    std::erase_if(definition.columns, [&](const Column& column) {
        return column.number >= definition.columnsEver ||
               (!column.isFixed() && column.variableIndex >= definition.variableColumnsEver);
    });
    return definition;
}

}  // namespace

FreshTable::FreshTable(FreshPages& pages, FreshMaps& maps, base::Text name, TableDefinition definition)
    : pages_(pages),
      maps_(maps),
      name_(std::move(name)),
      definition_(std::move(definition)),
      rows_(pages, definition_.page),
      entries_(definition_.indexes.size()),
      isGiven_(definition_.indexes.size()) {
    clearCounts();
    requireLongValueMaps();
    definition_.chain = {definition_.page};
    const std::size_t chainPages = definitionPageCount(definition_.encode().size());
    while (definition_.chain.size() < chainPages)
        definition_.chain.push_back(pages_.allocate());
    reservePlaces(maps);
}

void FreshTable::clearCounts() {
    definition_.rowCount = 0;
    for (IndexDefinition& index : definition_.indexes)
        index.distinctKeys = 0;
}

/// One for each column of long values; none for deleted columns.
void FreshTable::requireLongValueMaps() {
    std::vector<LongValueMaps>& maps = definition_.longValueMaps;
    std::erase_if(maps, [this](const LongValueMaps& each) {
        const Column* column = definition_.columnNumbered(each.columnNumber);
        return column == nullptr || !column->isLongValue();
    });
    for (const Column& column : definition_.columns) {
        if (column.isLongValue() && std::ranges::find(maps, column.number, &LongValueMaps::columnNumber) == maps.end())
            maps.push_back({column.number, {}, {}});
    }
}

void FreshTable::reservePlaces(FreshMaps& maps) {
    definition_.ownedPages = maps.reserve();
    definition_.pagesWithSpace = maps.reserve();
    for (LongValueMaps& longValue : definition_.longValueMaps) {
        longValue.owned = maps.reserve();
        longValue.pagesWithSpace = maps.reserve();
        longValues_.emplace(longValue.columnNumber, FreshRows(pages_, kLongValueOwner));
    }
    for (IndexDefinition& index : definition_.indexes) {
        index.usageMap = maps.reserve();
        index.rootPage = pages_.allocate();
    }
}

void FreshTable::addRow(std::span<const base::Value> values) {
    const std::vector<Key> keys = keysOf(values);
    store(encodeRow(definition_, cellsOf(values)), keys);
    for (const Column& column : definition_.columns) {
        const auto* number = std::get_if<std::int32_t>(&values[column.number]);
        if (number == nullptr || !column.isAutoNumber()) continue;
        const auto last = static_cast<std::int32_t>(definition_.lastAutoNumber);
        definition_.lastAutoNumber = static_cast<std::uint32_t>(std::max(last, *number));
    }
}

RowPointer FreshTable::addStoredRow(std::span<const Cell> cells, std::span<const base::Value> values) {
    const std::vector<Key> keys = keysOf(values);
    base::Bytes row = encodeRow(definition_, cells);
    if (row.size() > kMaxRowBytes) {
        const TableDefinition before = withoutLastNulls(definition_, cells);
        row = encodeRow(before, cells.first(before.columnsEver));
    }
    return store(row, keys);
}

RowPointer FreshTable::store(const base::Bytes& row, const std::vector<Key>& keys) {
    const RowPointer place = rows_.add(row);
    ++definition_.rowCount;
    for (const Key& key : keys)
        entries_[key.index].add(key.bytes, place, key.hasNull);
    return place;
}

std::vector<Cell> FreshTable::cellsOf(std::span<const base::Value> values) {
    assert(values.size() == definition_.columnsEver);
    std::vector<Cell> cells(values.size());
    for (const Column& column : definition_.columns) {
        const base::Value& value = values[column.number];
        if (base::isNull(value)) continue;
        if (const auto* flag = std::get_if<bool>(&value)) {
            cells[column.number] = base::Bytes{static_cast<std::uint8_t>(*flag)};
            continue;
        }
        base::Bytes stored = encodeValue(column, value);
        if (column.isLongValue())
            stored = stored.size() <= kMaxInlineLongValueBytes ? inlineLongValue(stored) : storeOutside(column, stored);
        cells[column.number] = std::move(stored);
    }
    return cells;
}

base::Bytes FreshTable::storeOutside(const Column& column, std::span<const std::uint8_t> value) {
    return placeLongValue(longValues_.at(column.number), value);
}

std::vector<FreshTable::Key> FreshTable::keysOf(std::span<const base::Value> values) const {
    std::vector<Key> keys;
    for (std::size_t i = 0; i < entries_.size(); ++i) {
        if (isGiven_[i]) continue;
        if (std::optional<Key> key = keyOf(i, values)) keys.push_back(std::move(*key));
    }
    return keys;
}

/// @return nothing if the index has no entry for the row
std::optional<FreshTable::Key> FreshTable::keyOf(std::size_t i, std::span<const base::Value> values) const {
    const IndexDefinition& index = definition_.indexes[i];
    Key key{i, {}, false};
    bool allNull = true;
    for (const IndexColumn& part : index.columns) {
        const Column& column = definition_.columnOf(part);
        const base::Value& value = values[column.number];
        if (!keyIsCertain(column, value)) {
            throw failure(u"Der Wert des Feldes '" + column.name + u"' kann nicht in den Index aufgenommen werden.");
        }
        const bool isNull = base::isNull(value) && column.type != ColumnType::Boolean;
        allNull = allNull && isNull;
        key.hasNull = key.hasNull || isNull;
        appendKeyPart(key.bytes, column, value, part.ascending);
    }
    if (key.hasNull && (index.isRequired() || index.isPrimary)) {
        throw failure(u"Der Index '" + index.name + u"' der Tabelle '" + name_ + u"' lässt keinen Nullwert zu.");
    }
    if (allNull && index.ignoresNulls()) return std::nullopt;
    return key;
}

std::size_t FreshTable::buildIndex(std::size_t i, const EntryFeed& nextEntry) {
    IndexDefinition& index = definition_.indexes[i];
    std::size_t count = 0;
    base::Bytes last;
    const EntryFeed counting = [&] {
        const auto entry = nextEntry();
        if (entry.empty()) return entry;
        const auto key = entry.first(entry.size() - kIndexRowBytes);
        if (count++ == 0 || !std::ranges::equal(key, last)) ++index.distinctKeys;
        last.assign(key.begin(), key.end());
        return entry;
    };
    maps_.set(index.usageMap, buildIndexTree(pages_, definition_.page, index.rootPage, counting));
    return count;
}

void FreshTable::finish() {
    rows_.finish();
    for (auto& [column, parts] : longValues_)
        parts.finish();
    for (std::size_t i = 0; i < entries_.size(); ++i) {
        if (isGiven_[i]) continue;
        IndexDefinition& index = definition_.indexes[i];
        entries_[i].sort();
        countKeys(index, entries_[i]);
        maps_.set(index.usageMap, buildIndexTree(pages_, definition_.page, index.rootPage, entries_[i].feed()));
    }
    entries_.clear();
    finishMaps();
    writeDefinition();
}

void FreshTable::countKeys(IndexDefinition& index, const IndexEntries& entries) const {
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (i == 0 || !std::ranges::equal(entries.key(i - 1), entries.key(i)))
            ++index.distinctKeys;
        else if (index.isUnique() && !entries.hasNull(i))
            throw failure(u"Zwei Datensätze der Tabelle '" + name_ + u"' haben im eindeutigen Index '" + index.name +
                          u"' denselben Schlüssel.");
    }
}

void FreshTable::finishMaps() {
    maps_.set(definition_.ownedPages, rows_.numbers());
    maps_.set(definition_.pagesWithSpace, rows_.numbersWithSpace());
    for (const LongValueMaps& longValue : definition_.longValueMaps) {
        const FreshRows& parts = longValues_.at(longValue.columnNumber);
        maps_.set(longValue.owned, parts.numbers());
        maps_.set(longValue.pagesWithSpace, parts.numbersWithSpace());
    }
}

void FreshTable::writeDefinition() {
    const std::vector<base::Bytes> pages = definitionPages(definition_.encode(), definition_.chain);
    for (std::size_t i = 0; i < pages.size(); ++i)
        pages_.write(definition_.chain[i], pages[i]);
}

}  // namespace jet
