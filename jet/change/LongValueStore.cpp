#include "jet/change/LongValueStore.h"

#include <algorithm>

#include "jet/Errors.h"

namespace jet {

LongValueStore::LongValueStore(PageStore& store, PageAllocator& allocator, const TableDefinition& table)
    : store_(store), allocator_(allocator), table_(table) {}

RowPages& LongValueStore::pagesOf(const Column& column) {
    const auto known = pages_.find(column.number);
    if (known != pages_.end()) return known->second;
    const auto maps = std::find_if(table_.longValueMaps.begin(), table_.longValueMaps.end(),
                                   [&](const LongValueMaps& each) { return each.columnNumber == column.number; });
    if (maps == table_.longValueMaps.end() || maps->owned.isNone()) {
        throw damaged(table_.page, u"Die Spalte '" + column.name + u"' hat keine Belegungskarte für lange Werte");
    }
    return pages_
        .emplace(column.number, RowPages(store_, allocator_, maps->owned, maps->pagesWithSpace, kLongValueOwner))
        .first->second;
}

void LongValueStore::remove(const Column& column, std::span<const std::uint8_t> stored, RowPointer row) {
    if (stored.empty()) return;
    // If the value can be read, its chain has an end and does not contain parts of another value.
    static_cast<void>(readLongValue(store_, stored, row));
    const LongValueReference reference = LongValueReference::read(stored, row);
    if (reference.kind == LongValueKind::SingleRow) pagesOf(column).remove(reference.first);
    if (reference.kind == LongValueKind::Chain) removeChain(pagesOf(column), reference.first);
}

void LongValueStore::removeChain(RowPages& pages, RowPointer part) {
    while (!part.isNone()) {
        const auto next = pointerAt(pages.read(part.page).slot(part.slot).bytes);
        pages.remove(part);
        part = next;
    }
}

}  // namespace jet
