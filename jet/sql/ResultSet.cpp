#include "jet/sql/ResultSet.h"

#include <utility>

#include "jet/Errors.h"
#include "jet/LongValue.h"
#include "jet/ValueCodec.h"

namespace jet::sql {

ResultSet::ResultSet(const TableDefinition& definition)
    : definition_(std::make_unique<const TableDefinition>(definition)), columns_(definition_->columnsForDisplay()) {
    for (const Column* column : columns_)
        if (column->isLongValue()) longColumns_.push_back(column);
}

RowView ResultSet::view(std::size_t row) const {
    const StoredRow& stored = rows_[row];
    return {std::span(bytes_).subspan(stored.offset, stored.lengthBytes), *definition_, stored.pointer};
}

base::Value ResultSet::value(std::size_t row, std::size_t column) const {
    const Column& wanted = *columns_[column];
    const RowView rowView = view(row);
    if (wanted.type == ColumnType::Boolean) return rowView.flag(wanted);
    if (rowView.isNull(wanted)) return base::Null{};
    const auto stored = wanted.isLongValue() ? longValue(rows_[row], wanted) : rowView.stored(wanted);
    return decodeValue(wanted, stored, rowView.place());
}

std::span<const std::uint8_t> ResultSet::longValue(const StoredRow& row, const Column& column) const {
    std::size_t place = row.firstLong;
    for (std::size_t i = 0; longColumns_[i] != &column; ++i)
        ++place;
    return std::span(bytes_).subspan(longValues_[place].offset, longValues_[place].lengthBytes);
}

void ResultSet::append(PageSource& source, const Row& row) {
    StoredRow stored;
    stored.pointer = row.pointer;
    stored.offset = bytes_.size();
    stored.firstLong = longValues_.size();
    const auto rowBytes = row.view.bytes();
    stored.lengthBytes = static_cast<std::uint32_t>(rowBytes.size());
    bytes_.insert(bytes_.end(), rowBytes.begin(), rowBytes.end());
    for (const Column* column : longColumns_) {
        LongValueBytes place;
        if (!row.view.isNull(*column)) {
            const base::Bytes value = readLongValue(source, row.view.stored(*column), row.pointer);
            place = {bytes_.size(), value.size()};
            bytes_.insert(bytes_.end(), value.begin(), value.end());
            longBytes_ += value.size();
        }
        // A sound file keeps each value once; many rows that point to one big value must not fill the memory.
        if (longBytes_ > std::uint64_t{source.pageCount()} * kPageSize)
            throw damagedRow(row.pointer, u"Mehrere Zeilen teilen sich ein langes Feld");
        longValues_.push_back(place);
    }
    rows_.push_back(stored);
}

void ResultSet::arrange(std::span<const std::uint32_t> order) {
    std::vector<StoredRow> arranged;
    arranged.reserve(rows_.size());
    for (const std::uint32_t row : order)
        arranged.push_back(rows_[row]);
    rows_ = std::move(arranged);
}

}  // namespace jet::sql
