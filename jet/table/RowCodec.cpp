#include "jet/table/RowCodec.h"

#include <algorithm>
#include <cassert>

#include "jet/Errors.h"
#include "jet/page/DataPage.h"

namespace jet {
namespace {

using base::u16At;

constexpr std::size_t kCountBytes = 2;
/// If the row moves, its old place must hold a pointer.
constexpr std::size_t kShortestRowBytes = kRowPointerBytes;

std::int64_t number(std::size_t value) {
    return static_cast<std::int64_t>(value);
}

}  // namespace

RowView::RowView(std::span<const std::uint8_t> bytes, const TableDefinition& definition, RowPointer place)
    : bytes_(bytes), definition_(&definition), place_(place) {
    if (bytes.size() < kCountBytes || bytes.size() > kPageSize) {
        throw damagedRow(place, u"Die Zeile hat " + base::decimal(number(bytes.size())) + u" Bytes");
    }
    columnCount_ = u16At(bytes, 0);
    if (columnCount_ == 0 || columnCount_ > definition.columnsEver) {
        throw damagedRow(place, u"Die Zeile hat " + base::decimal(columnCount_) + u" Spalten, die Tabelle " +
                                    base::decimal(definition.columnsEver));
    }
    const std::size_t maskBytes = nullMaskBytes(columnCount_);
    const bool hasVariable = definition.variableColumnsEver != 0;
    const std::size_t least = kCountBytes + maskBytes + (hasVariable ? 4 : 0);
    if (bytes.size() < least) throw damagedRow(place, u"Die Zeile ist zu kurz für ihre Spalten");
    maskStart_ = static_cast<std::uint16_t>(bytes.size() - maskBytes);
    if (!hasVariable) {
        fixedEnd_ = dataEnd_ = maskStart_;
        return;
    }
    offsetsEnd_ = static_cast<std::uint16_t>(maskStart_ - 2);
    variableCount_ = u16At(bytes, offsetsEnd_);
    if (variableCount_ > definition.variableColumnsEver || bytes.size() < least + 2 * std::size_t{variableCount_}) {
        throw damagedRow(place, u"Die Zeile hat " + base::decimal(variableCount_) + u" Spalten veränderlicher Länge");
    }
    const std::size_t tableStart = offsetsEnd_ - 2 * (std::size_t{variableCount_} + 1);
    dataEnd_ = u16At(bytes, tableStart);
    fixedEnd_ = variableCount_ == 0 ? dataEnd_ : static_cast<std::uint16_t>(variableOffset(0));
    if (dataEnd_ > tableStart || fixedEnd_ < kCountBytes || fixedEnd_ > dataEnd_) {
        throw damagedRow(place, u"Die Daten der Zeile enden bei Byte " + base::decimal(dataEnd_));
    }
}

std::size_t RowView::variableOffset(std::size_t index) const {
    return u16At(bytes_, offsetsEnd_ - 2 * (index + 1));
}

std::span<const std::uint8_t> RowView::stored(const Column& column) const {
    assert(!isNull(column));
    if (column.isFixed()) {
        const std::size_t start = kCountBytes + column.fixedOffset;
        if (start + column.lengthBytes > fixedEnd_) failOutside(column);
        return bytes_.subspan(start, column.lengthBytes);
    }
    const std::size_t next = column.variableIndex + std::size_t{1};
    const std::size_t start = variableOffset(column.variableIndex);
    const std::size_t end = next < variableCount_ ? variableOffset(next) : dataEnd_;
    if (start < fixedEnd_ || start > end || end > dataEnd_) failOutside(column);
    return bytes_.subspan(start, end - start);
}

void RowView::failOutside(const Column& column) const {
    throw damagedRow(place_, u"Spalte '" + column.name + u"' liegt außerhalb der Zeile");
}

base::Bytes encodeRow(const TableDefinition& definition, std::span<const Cell> cells) {
    assert(cells.size() == definition.columnsEver);
    const std::size_t fixedEnd = kCountBytes + definition.fixedAreaBytes();
    base::Bytes row(fixedEnd, 0);
    base::putU16(row, 0, definition.columnsEver);
    base::Bytes mask(nullMaskBytes(definition.columnsEver), 0);
    std::vector<const base::Bytes*> variable(definition.variableColumnsEver, nullptr);
    for (const Column& column : definition.columns) {
        const Cell& cell = cells[column.number];
        if (!cell) continue;
        const bool isBoolean = column.type == ColumnType::Boolean;
        if (!isBoolean || cell->at(0) != 0)
            mask[column.number / 8U] |= static_cast<std::uint8_t>(1U << (column.number % 8U));
        if (isBoolean) continue;
        if (column.isFixed()) {
            assert(cell->size() == column.lengthBytes);
            std::copy(cell->begin(), cell->end(),
                      row.begin() + static_cast<std::ptrdiff_t>(kCountBytes + column.fixedOffset));
        } else {
            variable[column.variableIndex] = &*cell;
        }
    }
    if (definition.variableColumnsEver != 0) {
        std::vector<std::uint16_t> offsets;
        for (const base::Bytes* bytes : variable) {
            offsets.push_back(static_cast<std::uint16_t>(row.size()));
            if (bytes != nullptr) row.insert(row.end(), bytes->begin(), bytes->end());
        }
        offsets.push_back(static_cast<std::uint16_t>(row.size()));
        std::reverse(offsets.begin(), offsets.end());
        offsets.push_back(definition.variableColumnsEver);
        for (const std::uint16_t offset : offsets)
            base::appendLittleEndian(row, offset, 2);
    }
    if (row.size() + mask.size() < kShortestRowBytes) row.resize(kShortestRowBytes - mask.size());
    row.insert(row.end(), mask.begin(), mask.end());
    return row;
}

}  // namespace jet
