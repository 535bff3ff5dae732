#include "jet/change/RowDraft.h"

#include <algorithm>
#include <cassert>

#include "jet/WriteErrors.h"
#include "jet/change/RowStore.h"
#include "jet/table/LongValue.h"
#include "jet/table/Table.h"
#include "jet/value/SortKey.h"
#include "jet/value/TextCodec.h"
#include "jet/value/ValueCodec.h"

namespace jet {
namespace {

std::optional<RowView> viewOf(const base::Bytes& bytes, const RowView& old) {
    return RowView(bytes, old.definition(), old.place());
}

}  // namespace

RowDraft::RowDraft(PageSource& source, const TableDefinition& table)
    : source_(source), table_(table), cells_(table.columnsEver) {}

RowDraft::RowDraft(PageSource& source, const TableDefinition& table, const RowView& old)
    : source_(source),
      table_(table),
      oldBytes_(old.bytes().begin(), old.bytes().end()),
      old_(viewOf(oldBytes_, old)),
      cells_(table.columnsEver) {
    for (const Column& column : table.columns) {
        if (column.type == ColumnType::Boolean) {
            cells_[column.number] = base::Bytes{static_cast<std::uint8_t>(old_->flag(column) ? 1 : 0)};
        } else if (!old_->isNull(column)) {
            const auto stored = old_->stored(column);
            cells_[column.number] = base::Bytes(stored.begin(), stored.end());
        }
    }
}

base::Bytes RowDraft::oldLongValue(const Column& column) const {
    return readLongValue(source_, old_->stored(column), old_->place());
}

void RowDraft::put(const Column& column, const base::Value& value) {
    Cell& cell = cells_[column.number];
    newLongValues_.erase(column.number);
    if (base::isNull(value)) {
        cell.reset();
        return;
    }
    base::Bytes bytes = encodeValue(column, value);
    if (!column.isLongValue()) {
        cell = std::move(bytes);
        return;
    }
    if (old_ && !old_->isNull(column) && oldLongValue(column) == bytes) {
        const auto stored = old_->stored(column);
        cell = base::Bytes(stored.begin(), stored.end());
        return;
    }
    cell.reset();
    newLongValues_[column.number] = std::move(bytes);
}

base::Value RowDraft::valueOf(const Column& column) const {
    const auto fresh = newLongValues_.find(column.number);
    const RowPointer place = old_ ? old_->place() : RowPointer{};
    if (fresh != newLongValues_.end()) return decodeValue(column, fresh->second, place);
    const Cell& cell = cells_[column.number];
    if (column.type == ColumnType::Boolean) return cell && cell->at(0) != 0;
    if (!cell) return base::Null{};
    if (!column.isLongValue()) return decodeValue(column, *cell, place);
    return decodeValue(column, readLongValue(source_, *cell, place), place);
}

bool RowDraft::isChanged(const Column& column) const {
    if (!old_) return true;
    if (newLongValues_.contains(column.number)) return true;
    const Cell& cell = cells_[column.number];
    if (column.type == ColumnType::Boolean) return (cell && cell->at(0) != 0) != old_->flag(column);
    if (!cell || old_->isNull(column)) return cell.has_value() == old_->isNull(column);
    return !std::ranges::equal(*cell, old_->stored(column));
}

bool RowDraft::isChanged() const {
    return std::any_of(table_.columns.begin(), table_.columns.end(),
                       [&](const Column& column) { return isChanged(column); });
}

RowView RowDraft::preview() {
    std::vector<Cell> cells = cells_;
    for (const auto& [number, bytes] : newLongValues_) {
        const Column& column = *table_.columnNumbered(number);
        base::Bytes shown;
        if (column.type == ColumnType::Memo) {
            base::Text text;
            if (decodeText(bytes, text) && text.size() > kSortKeyUnits) text.resize(kSortKeyUnits);
            shown = encodeText(text, true);
        }
        cells[number] = inlineLongValue(shown);
    }
    preview_ = encodeRow(table_, cells);
    if (preview_.size() > kPageSize) throw rowTooLong();
    return {preview_, table_, old_ ? old_->place() : RowPointer{}};
}

/// The length of the row if new long values up to this length stay in it.
std::size_t RowDraft::bytesWith(std::size_t mostInRow) const {
    std::vector<Cell> cells = cells_;
    for (const auto& [number, bytes] : newLongValues_)
        cells[number] = inlineLongValue(bytes.size() <= mostInRow ? std::span(bytes) : std::span<const std::uint8_t>());
    return encodeRow(table_, cells).size();
}

/// Up to which length new long values stay in the row: if it would be too long with them, none do.
std::size_t RowDraft::mostInRow() const {
    for (const std::size_t most : {kMaxInlineLongValueBytes, std::size_t{0}}) {
        if (bytesWith(most) <= std::max(RowStore::kMaxBytes, oldBytes_.size())) return most;
    }
    throw rowTooLong();
}

void RowDraft::checkLength() const {
    static_cast<void>(mostInRow());
}

void RowDraft::removeOldLongValue(LongValueStore& longValues, const Column& column) const {
    if (old_ && !old_->isNull(column)) longValues.remove(column, old_->stored(column), old_->place());
}

void RowDraft::removeOldLongValues(LongValueStore& longValues) const {
    for (const Column& column : table_.columns)
        if (column.isLongValue()) removeOldLongValue(longValues, column);
}

base::Bytes RowDraft::finish(LongValueStore& longValues) {
    const std::size_t most = mostInRow();
    for (const Column& column : table_.columns) {
        if (!column.isLongValue() || !isChanged(column)) continue;
        removeOldLongValue(longValues, column);
        const auto fresh = newLongValues_.find(column.number);
        if (fresh == newLongValues_.end()) continue;
        cells_[column.number] =
            fresh->second.size() <= most ? inlineLongValue(fresh->second) : longValues.add(column, fresh->second);
    }
    return encodeRow(table_, cells_);
}

}  // namespace jet
