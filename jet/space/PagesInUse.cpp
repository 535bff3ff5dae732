#include "jet/space/PagesInUse.h"

#include "jet/space/UsageMapRow.h"
#include "jet/table/Catalog.h"

namespace jet {

PagesInUse::PagesInUse(PageStore& store) : store_(store), isUsed_(store.pageCount()) {
    const Catalog catalog(store);
    for (const CatalogEntry& entry : catalog.entries()) {
        if (entry.isLocalTable()) addTable(TableDefinition::read(store, entry.id));
    }
}

void PagesInUse::addTable(const TableDefinition& definition) {
    for (const PageNumber page : definition.chain)
        addPage(page);
    addMap(definition.ownedPages);
    addPage(definition.pagesWithSpace.page);
    for (const IndexDefinition& index : definition.indexes) {
        addPage(index.rootPage);
        addMap(index.usageMap);
    }
    for (const LongValueMaps& maps : definition.longValueMaps) {
        // The entries of deleted columns remain in the definition.
        if (definition.columnNumbered(maps.columnNumber) == nullptr) continue;
        addMap(maps.owned);
        addPage(maps.pagesWithSpace.page);
    }
}

/// Adds the page of the map's row, its bitmap pages, and the pages that it names.
void PagesInUse::addMap(RowPointer row) {
    if (row.isNone()) return;
    const UsageMapRow map(store_, row);
    addPage(row.page);
    for (std::size_t entry = 0; map.isReference() && entry < map.entryCount(); ++entry)
        addPage(map.bitmapPage(entry));
    for (const PageNumber page : map.pagesBefore(static_cast<PageNumber>(isUsed_.size())))
        addPage(page);
}

void PagesInUse::addPage(PageNumber page) {
    if (page < isUsed_.size()) isUsed_[page] = true;
}

}  // namespace jet
