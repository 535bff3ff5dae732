#include "jet/space/UsageMapWriter.h"

#include <algorithm>
#include <vector>

#include "jet/Errors.h"

namespace jet {
namespace {

std::vector<PageNumber> pagesOf(const UsageMapRow& map, PageNumber pageCount) {
    if (const auto page = map.next(pageCount))
        throw damaged(*page, u"Eine Belegungskarte nennt eine Seite hinter dem Ende der Datei");
    return map.pagesBefore(pageCount);
}

}  // namespace

UsageMapWriter::UsageMapWriter(PageStore& store, PageAllocator& allocator, RowPointer row)
    : store_(store), allocator_(allocator) {
    if (!row.isNone()) map_.emplace(store, row);
}

void UsageMapWriter::set(PageNumber page) {
    if (!map_) return;
    if (!map_->covers(page)) {
        if (map_->isReference())
            addBitmap(page / kBitmapPages);
        else if (!widen(page))
            turnIntoReferences(page);
    }
    map_->put(page, true);
}

void UsageMapWriter::clear(PageNumber page) {
    if (contains(page)) map_->put(page, false);
}

/// Lets an inline row begin at its lowest page, and makes it long enough for its highest page.
/// @return false, and nothing changed, if the page of the row has no room
bool UsageMapWriter::widen(PageNumber page) {
    std::vector<PageNumber> pages = pagesOf(*map_, store_.pageCount());
    const std::size_t rowBytes = map_->bytes().size();
    const PageNumber lowest = pages.empty() ? page : std::min(pages.front(), page);
    const PageNumber highest = pages.empty() ? page : std::max(pages.back(), page);
    const PageNumber first = lowest / 8 * 8;
    const std::size_t newBytes = longerMapRow(rowBytes, inlineRowBytes(highest - first + 1));
    return newBytes <= kPageSize && map_->replace(UsageMap::inlineRow(first, pages, newBytes));
}

void UsageMapWriter::turnIntoReferences(PageNumber page) {
    std::vector<PageNumber> pages = pagesOf(*map_, store_.pageCount());
    const PageNumber highest = pages.empty() ? page : std::max(pages.back(), page);
    const std::size_t rowBytes = longerMapRow(map_->bytes().size(), mapEntryOffset(highest / kBitmapPages + 1));
    if (!map_->replace(UsageMap::referenceRow({}, rowBytes))) {
        throw damaged(page, u"Für die Belegungskarte, in die die Seite gehört, ist kein Platz");
    }
    for (const PageNumber number : pages)
        set(number);
    if (!map_->covers(page)) addBitmap(page / kBitmapPages);
}

void UsageMapWriter::addBitmap(std::size_t entry) {
    if (entry >= map_->entryCount()) {
        throw damaged(static_cast<PageNumber>(entry * kBitmapPages), u"Die Belegungskarte ist zu kurz für die Seite");
    }
    const PageNumber bitmap = allocator_.allocate();
    clearBitmapPage(store_.change(bitmap), 0);
    map_->setBitmapPage(entry, bitmap);
}

}  // namespace jet
