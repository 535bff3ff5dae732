#include "jet/compact/TableCopy.h"

#include <algorithm>

#include "jet/Errors.h"
#include "jet/table/LongValue.h"
#include "jet/tree/IndexCursor.h"
#include "jet/value/ValueCodec.h"

namespace jet {

TableCopy::TableCopy(const Table& original, const ObjectNumbers& numbers, FreshTable& fresh)
    : original_(original),
      numbers_(numbers),
      fresh_(fresh),
      numberColumns_(ObjectNumbers::columnsIn(original.entry(), original.definition())),
      cells_(original.definition().columnsEver) {}

void TableCopy::run() {
    const std::vector<IndexDefinition>& indexes = original_.definition().indexes;
    for (std::size_t i = 0; i < indexes.size(); ++i) {
        if (!holdsNumbers(indexes[i])) fresh_.takeEntries(i);
    }
    copyRows();
    for (std::size_t i = 0; i < indexes.size(); ++i) {
        if (!holdsNumbers(indexes[i])) copyIndex(i);
    }
    fresh_.finish();
}

bool TableCopy::holdsNumbers(const IndexDefinition& index) const {
    return std::ranges::any_of(index.columns, [&](const IndexColumn& part) {
        return std::ranges::find(numberColumns_, part.columnNumber, &Column::number) != numberColumns_.end();
    });
}

void TableCopy::copyRows() {
    for (RowCursor cursor(original_); cursor.next();) {
        const Row& row = cursor.row();
        copyCells(row.view);
        if (!numberColumns_.empty()) putNumbers(row.view);
        from_.push_back(row.pointer.packed());
        to_.push_back(fresh_.addStoredRow(cells_, values_).packed());
    }
}

void TableCopy::copyCells(const RowView& row) {
    for (const Column& column : original_.definition().columns) {
        Cell& cell = cells_[column.number];
        if (row.isNull(column)) {
            cell.reset();
            continue;
        }
        if (!cell) cell.emplace();
        if (column.type == ColumnType::Boolean) {
            cell->assign(1, static_cast<std::uint8_t>(row.flag(column)));
        } else if (column.isLongValue()) {
            *cell = longValue(row, column);
        } else {
            const auto stored = row.stored(column);
            cell->assign(stored.begin(), stored.end());
        }
    }
}

/// Stays in the row, or outside of it, as it was. So the row does not get longer.
base::Bytes TableCopy::longValue(const RowView& row, const Column& column) {
    const auto stored = row.stored(column);
    if (stored.empty()) return {};
    const base::Bytes value = readLongValue(original_.source(), stored, row.place());
    const bool isInline = LongValueReference::read(stored, row.place()).kind == LongValueKind::Inline;
    return isInline ? inlineLongValue(value) : fresh_.storeOutside(column, value);
}

void TableCopy::putNumbers(const RowView& row) {
    values_.assign(original_.definition().columnsEver, {});
    for (const Column& column : original_.definition().columns)
        values_[column.number] = original_.value(row, column);
    numbers_.renumber(numberColumns_, values_);
    for (const Column* column : numberColumns_) {
        const base::Value& value = values_[column->number];
        if (!base::isNull(value)) cells_[column->number] = encodeValue(*column, value);
    }
}

void TableCopy::copyIndex(std::size_t i) {
    const IndexDefinition& index = original_.definition().indexes[i];
    IndexCursor cursor(original_.source(), original_.definition().page, index.rootPage);
    bool there = cursor.first();
    base::Bytes entry;
    const std::size_t entries = fresh_.buildIndex(i, [&]() -> std::span<const std::uint8_t> {
        if (!there) return {};
        const auto key = cursor.key();
        entry.assign(key.begin(), key.end());
        appendRowPointer(entry, newPlace(cursor.row()));
        there = cursor.next();
        return entry;
    });
    if (entries > from_.size() || (entries < from_.size() && !index.ignoresNulls())) {
        throw damaged(index.rootPage, u"Der Index '" + index.name + u"' der Tabelle '" + original_.name() + u"' hat " +
                                          base::decimal(entries) + u" Einträge für " + base::decimal(from_.size()) +
                                          u" Datensätze");
    }
}

RowPointer TableCopy::newPlace(RowPointer original) const {
    const auto found = std::ranges::lower_bound(from_, original.packed());
    if (found == from_.end() || *found != original.packed()) {
        throw damagedRow(original,
                         u"Ein Index der Tabelle '" + original_.name() + u"' nennt diese Zeile, die es nicht gibt");
    }
    return RowPointer::unpack(to_[static_cast<std::size_t>(found - from_.begin())]);
}

}  // namespace jet
