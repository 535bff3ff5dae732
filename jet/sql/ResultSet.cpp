#include "jet/sql/ResultSet.h"

#include <algorithm>
#include <utility>

#include "jet/Errors.h"
#include "jet/LongValue.h"
#include "jet/ValueCodec.h"

namespace jet::sql {

namespace {

constexpr std::size_t kBlockBytes = std::size_t{256} * 1024;
constexpr std::size_t kRowsAhead = 8;

}  // namespace

base::Value ResultRow::value(std::size_t column) const {
    const Column& wanted = set_.column(column);
    if (wanted.type == ColumnType::Boolean) return view_.flag(wanted);
    if (view_.isNull(wanted)) return base::Null{};
    const auto stored = wanted.isLongValue() ? set_.longValue(firstLong_, wanted) : view_.stored(wanted);
    return decodeValue(wanted, stored, view_.place());
}

std::optional<std::string_view> ResultRow::asciiText(std::size_t column) const {
    const Column& wanted = set_.column(column);
    if (wanted.type != ColumnType::Text || view_.isNull(wanted)) return std::nullopt;
    const auto stored = view_.stored(wanted);
    if (stored.size() < 2 || stored[0] != 0xFF || stored[1] != 0xFE) return std::nullopt;
    // A zero would end the run of bytes that stand for themselves.
    std::uint8_t all = 0;
    std::uint8_t zeros = 0;
    for (const std::uint8_t byte : stored.subspan(2)) {
        all |= byte;
        zeros |= static_cast<std::uint8_t>(byte == 0);
    }
    if (all >= 0x80 || zeros != 0) return std::nullopt;
    return std::string_view(reinterpret_cast<const char*>(stored.data()) + 2, stored.size() - 2);
}

ResultSet::ResultSet(const TableDefinition& definition)
    : definition_(std::make_unique<const TableDefinition>(definition)), columns_(definition_->columnsForDisplay()) {
    for (const Column* column : columns_)
        if (column->isLongValue()) longColumns_.push_back(column);
}

ResultRow ResultSet::row(std::size_t row) const {
    const StoredRow& stored = rows_[row];
    // Rows are asked for one after the other, but in another order they lie far apart.
    if (row + kRowsAhead < rows_.size()) {
        const Stored ahead = rows_[row + kRowsAhead].bytes;
        __builtin_prefetch(ahead.data());
        __builtin_prefetch(ahead.data() + ahead.size() - 1);
    }
    return {*this, stored.firstLong, RowView(stored.bytes, *definition_, stored.pointer)};
}

ResultSet::Stored ResultSet::longValue(std::size_t firstLong, const Column& column) const {
    std::size_t place = firstLong;
    for (std::size_t i = 0; longColumns_[i] != &column; ++i)
        ++place;
    return longValues_[place];
}

ResultSet::Stored ResultSet::store(Stored bytes) {
    if (bytes.size() > freeBytes_) {
        freeBytes_ = std::max(kBlockBytes, bytes.size());
        blocks_.push_back(std::make_unique_for_overwrite<std::uint8_t[]>(freeBytes_));
        free_ = blocks_.back().get();
    }
    std::copy(bytes.begin(), bytes.end(), free_);
    const Stored stored(free_, bytes.size());
    free_ += bytes.size();
    freeBytes_ -= bytes.size();
    return stored;
}

void ResultSet::append(PageSource& source, const Row& row) {
    StoredRow stored;
    stored.pointer = row.pointer;
    stored.firstLong = longValues_.size();
    stored.bytes = store(row.view.bytes());
    for (const Column* column : longColumns_) {
        Stored& value = longValues_.emplace_back();
        if (row.view.isNull(*column)) continue;
        value = store(readLongValue(source, row.view.stored(*column), row.pointer));
        longBytes_ += value.size();
        // A sound file keeps each value once; many rows that point to one big value must not fill the memory.
        if (longBytes_ > std::uint64_t{source.pageCount()} * kPageSize)
            throw damagedRow(row.pointer, u"Mehrere Zeilen teilen sich ein langes Feld");
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
