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

TableDefinition withPage(TableDefinition definition, PageNumber page) {
    definition.page = page;
    return definition;
}

}  // namespace

FreshTable::FreshTable(FreshPages& pages, FreshMaps& maps, const TableDesign& design, PageNumber definitionPage)
    : FreshTable(pages, maps, design.name, withPage(makeDefinition(design), definitionPage)) {}

FreshTable::FreshTable(FreshPages& pages, FreshMaps& maps, base::Text name, TableDefinition definition)
    : pages_(pages),
      maps_(maps),
      name_(std::move(name)),
      definition_(std::move(definition)),
      rows_(pages, definition_.page),
      entries_(definition_.indexes.size()) {
    clearCounts();
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

void FreshTable::reservePlaces(FreshMaps& maps) {
    definition_.ownedPages = maps.reserve();
    definition_.pagesWithSpace = maps.reserve();
    for (LongValueMaps& longValue : definition_.longValueMaps) {
        longValue.owned = maps.reserve();
        longValue.free = maps.reserve();
        longValues_.emplace(longValue.columnNumber, FreshRows(pages_, kLongValueOwner));
    }
    for (IndexDefinition& index : definition_.indexes) {
        index.usageMap = maps.reserve();
        index.rootPage = pages_.allocate();
    }
}

void FreshTable::addRow(std::span<const base::Value> values) {
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
        cells[column.number] = column.isLongValue() ? longValue(column, stored) : std::move(stored);
        if (const auto* number = std::get_if<std::int32_t>(&value); number != nullptr && column.isAutoNumber()) {
            const auto last = static_cast<std::int32_t>(definition_.lastAutoNumber);
            definition_.lastAutoNumber = static_cast<std::uint32_t>(std::max(last, *number));
        }
    }
    const RowPointer row = rows_.add(encodeRow(definition_, cells));
    ++definition_.rowCount;
    addToIndexes(values, row);
}

/// The bytes of the row for this long value.
base::Bytes FreshTable::longValue(const Column& column, const base::Bytes& value) {
    if (value.size() <= kMaxInlineLongValueBytes) return inlineLongValue(value);
    return placeLongValue(longValues_.at(column.number), value);
}

void FreshTable::addToIndexes(std::span<const base::Value> values, RowPointer row) {
    base::Bytes key;
    for (std::size_t i = 0; i < entries_.size(); ++i) {
        const IndexDefinition& index = definition_.indexes[i];
        key.clear();
        bool allNull = true;
        bool hasNull = false;
        for (const IndexColumn& part : index.columns) {
            const Column& column = definition_.columnOf(part);
            const base::Value& value = values[column.number];
            if (!keyIsCertain(column, value)) {
                throw failure(u"Der Wert des Feldes '" + column.name +
                              u"' kann nicht in den Index aufgenommen werden.");
            }
            const bool isNull = base::isNull(value) && column.type != ColumnType::Boolean;
            allNull = allNull && isNull;
            hasNull = hasNull || isNull;
            appendKeyPart(key, column, value, part.ascending);
        }
        if (hasNull && (index.isRequired() || index.isPrimary)) {
            throw failure(u"Der Index '" + index.name + u"' der Tabelle '" + name_ + u"' lässt keinen Nullwert zu.");
        }
        if (!allNull || !index.ignoresNulls()) entries_[i].add(key, row, hasNull);
    }
}

void FreshTable::finish() {
    rows_.finish();
    for (auto& [column, parts] : longValues_)
        parts.finish();
    for (std::size_t i = 0; i < entries_.size(); ++i) {
        IndexDefinition& index = definition_.indexes[i];
        entries_[i].sort();
        countKeys(index, entries_[i]);
        maps_.set(index.usageMap, buildIndexTree(pages_, definition_.page, index.rootPage, entries_[i]));
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
        maps_.set(longValue.free, parts.numbersWithSpace());
    }
}

void FreshTable::writeDefinition() {
    const std::vector<base::Bytes> pages = definitionPages(definition_.encode(), definition_.chain);
    for (std::size_t i = 0; i < pages.size(); ++i)
        pages_.write(definition_.chain[i], pages[i]);
}

}  // namespace jet
