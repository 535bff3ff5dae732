#include "jet/table/Table.h"

#include <algorithm>

#include "jet/Errors.h"
#include "jet/page/MovedRow.h"
#include "jet/table/LongValue.h"
#include "jet/tree/IndexCursor.h"
#include "jet/value/ValueCodec.h"

namespace jet {
namespace {

/// @return 0 if all entries point to pages that the table owns
PageNumber strangePageOf(PageSource& source, const TableDefinition& definition, const IndexDefinition& index,
                         const UsageMap& owned) {
    IndexCursor cursor(source, definition.page, index.rootPage);
    for (bool there = cursor.first(); there; there = cursor.next()) {
        if (!owned.contains(cursor.row().page)) return cursor.row().page;
    }
    return 0;
}

bool hasRowsOf(PageNumber definitionPage, const PageView& page) {
    return page.kind() == PageKind::Data && page.bytes.u32(kOwnerOffset) == definitionPage &&
           DataPage(page).hasLiveRows();
}

/// @return 0 if there is none
PageNumber strangePageOfRows(PageSource& source, const TableDefinition& definition, const UsageMap& owned) {
    const UsageMap free = UsageMap::read(source, {kGlobalMapPage, 0});
    for (PageNumber page = kGlobalMapPage + 1; page < source.pageCount(); ++page) {
        if (!owned.contains(page) && !free.contains(page) && hasRowsOf(definition.page, source.page(page))) return page;
    }
    return 0;
}

}  // namespace

Table::Table(PageSource& source, CatalogEntry entry)
    : source_(&source),
      entry_(std::move(entry)),
      definition_(TableDefinition::read(source, entry_.id)),
      ownedPages_(UsageMap::read(source, definition_.ownedPages)) {}

Row Table::rowOf(const DataPage& page, std::size_t slotIndex) const {
    const RowPointer pointer{page.number(), static_cast<std::uint8_t>(slotIndex)};
    const Slot slot = page.slot(slotIndex);
    if (slot.state == SlotState::Live) return {pointer, RowView(slot.bytes, definition_, pointer), page.page()};
    if (slot.state != SlotState::Moved) throw damagedRow(pointer, u"Die Zeile ist gelöscht");
    const MovedRow moved = followMovedRow(*source_, pointer, slot, definition_.page);
    return {pointer, RowView(moved.bytes, definition_, moved.places.back()), moved.page.page()};
}

void Table::requireAllMet(std::size_t rowsMet) const {
    if (rowsMet >= definition_.rowCount) return;
    // A caller that writes during its own scan has changed the count and the map by now.
    const TableDefinition now = TableDefinition::read(*source_, definition_.page);
    if (rowsMet >= now.rowCount) return;
    const UsageMap owned = UsageMap::read(*source_, now.ownedPages);
    const auto index = std::ranges::find_if_not(now.indexes, &IndexDefinition::ignoresNulls);
    const PageNumber lost = index != now.indexes.end() ? strangePageOf(*source_, now, *index, owned)
                                                       : strangePageOfRows(*source_, now, owned);
    if (lost == 0) return;
    throw damaged(lost, u"Die Seite hat Datensätze der Tabelle '" + name() +
                            u"' und fehlt in ihrer Belegungskarte; gelesen sind " + base::decimal(rowsMet) + u" von " +
                            base::decimal(now.rowCount) + u" Datensätzen");
}

Row Table::rowAt(RowPointer pointer) const {
    return rowOf(DataPage::read(*source_, pointer.page, definition_.page), pointer.slot);
}

base::Value Table::value(const RowView& row, const Column& column) const {
    return valueOf(*source_, row, column);
}

PropertyBlob Table::properties() const {
    if (entry_.row.isNone()) return {};
    const Table catalog(*source_, CatalogEntry::ofCatalog());
    const Column* column = catalog.definition().column(u"LvProp");
    if (column == nullptr) return {};
    const Row row = catalog.rowAt(entry_.row);
    if (row.view.isNull(*column)) return {};
    const base::Value value = catalog.value(row.view, *column);
    const auto* bytes = std::get_if<base::Bytes>(&value);
    if (bytes == nullptr) throw damagedRow(entry_.row, u"Die Eigenschaften sind nicht von der Art OLE");
    return PropertyBlob::read(*bytes, entry_.row);
}

bool RowCursor::next() {
    if (nextRow()) {
        ++rowsMet_;
        return true;
    }
    table_.requireAllMet(rowsMet_);
    return false;
}

bool RowCursor::nextRow() {
    while (true) {
        if (nextSlot_ >= page_.slotCount()) {
            if (!nextPage()) return false;
            continue;
        }
        const std::size_t slotIndex = nextSlot_++;
        const Slot slot = page_.slot(slotIndex);
        if (slot.state == SlotState::Live) {
            const RowPointer pointer{page_.number(), static_cast<std::uint8_t>(slotIndex)};
            row_.pointer = pointer;
            row_.view = RowView(slot.bytes, table_.definition(), pointer);
            if (row_.page.bytes.bytes().data() != page_.page().bytes.bytes().data()) row_.page = page_.page();
            return true;
        }
        if (slot.state == SlotState::Moved) {
            row_ = table_.rowOf(page_, slotIndex);
            if (!movedTo_.insert(row_.view.place().packed()).second) {
                throw damagedRow(row_.view.place(), u"Zwei Zeilen sind an denselben Platz verschoben");
            }
            return true;
        }
    }
}

bool RowCursor::nextPage() {
    const auto number = table_.ownedPages().next(nextPage_);
    if (!number) return false;
    page_ = DataPage::read(table_.source(), *number, table_.definition().page);
    nextPage_ = *number + 1;
    nextSlot_ = 0;
    return true;
}

base::Value valueOf(PageSource& source, const RowView& row, const Column& column) {
    if (column.type == ColumnType::Boolean) return row.flag(column);
    if (row.isNull(column)) return base::Null{};
    const auto stored = row.stored(column);
    if (!column.isLongValue()) return decodeValue(column, stored, row.place());
    return decodeValue(column, readLongValue(source, stored, row.place()), row.place());
}

}  // namespace jet
