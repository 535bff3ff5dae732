#include "jet/space/UsageMapRow.h"

#include <algorithm>
#include <cassert>

#include "jet/Errors.h"
#include "jet/page/DataPageEditor.h"

namespace jet {

UsageMapRow::UsageMapRow(PageStore& store, RowPointer row) : store_(store), row_(row) {
    assert(!row.isNone());
    UsageMap::read(store, row);
}

UsageMapRow::Extent UsageMapRow::extent() const {
    const DataPage page = DataPage::read(store_, row_.page, mapOwner(row_.page));
    const auto bytes = page.slot(row_.slot).bytes;
    return {row_.page, static_cast<std::size_t>(bytes.data() - page.page().bytes.bytes().data()), bytes.size()};
}

std::uint32_t UsageMapRow::word(std::size_t offset) const {
    const Extent row = extent();
    return store_.page(row.page).bytes.u32(row.offset + offset);
}

bool UsageMapRow::isReference() const {
    const Extent row = extent();
    return store_.page(row.page).bytes.u8(row.offset) == kReferenceMap;
}

std::size_t UsageMapRow::entryCount() const {
    return mapEntryCount(extent().bytes);
}

PageNumber UsageMapRow::bitmapPage(std::size_t entry) const {
    return word(mapEntryOffset(entry));
}

void UsageMapRow::setBitmapPage(std::size_t entry, PageNumber page) {
    const Extent row = extent();
    assert(entry < mapEntryCount(row.bytes));
    base::putU32(store_.change(row.page), row.offset + mapEntryOffset(entry), page);
}

std::optional<UsageMapRow::Place> UsageMapRow::placeOf(PageNumber page) const {
    if (isReference()) {
        const std::size_t entry = page / kBitmapPages;
        const PageNumber bitmap = entry < entryCount() ? bitmapPage(entry) : 0;
        if (bitmap == 0) return std::nullopt;
        return Place{bitmap, kBitmapBitsOffset, page % kBitmapPages};
    }
    const Extent row = extent();
    const PageNumber first = word(kFirstPageOffset);
    if (page < first || (page - first) / 8 >= row.bytes - kInlineBitsOffset) return std::nullopt;
    return Place{row.page, row.offset + kInlineBitsOffset, page - first};
}

bool UsageMapRow::contains(PageNumber page) const {
    const auto place = placeOf(page);
    if (!place) return false;
    const std::uint8_t byte = store_.page(place->page).bytes.u8(place->bitsOffset + place->bit / 8);
    return ((byte >> (place->bit % 8)) & 1U) != 0;
}

void UsageMapRow::put(PageNumber page, bool isSet) {
    const auto place = placeOf(page);
    assert(place);
    putBit(store_.change(place->page).subspan(place->bitsOffset), place->bit, isSet);
}

std::optional<PageNumber> UsageMapRow::next(PageNumber from) const {
    if (!isReference()) {
        const base::Bytes row = bytes();
        const PageNumber first = base::ByteView{row}.u32(kFirstPageOffset);
        const auto bit = nextBit(std::span(row).subspan(kInlineBitsOffset), std::max(from, first) - std::size_t{first});
        if (!bit || *bit > 0xFFFFFFFF - first) return std::nullopt;
        return first + static_cast<PageNumber>(*bit);
    }
    for (std::size_t entry = from / kBitmapPages; entry < entryCount(); ++entry) {
        const PageNumber bitmap = bitmapPage(entry);
        if (bitmap == 0) continue;
        const PageView page = store_.page(bitmap);
        const auto first = static_cast<PageNumber>(entry * kBitmapPages);
        const auto bit =
            nextBit(page.bytes.from(kBitmapBitsOffset).bytes(), std::max(from, first) - std::size_t{first});
        if (bit) return first + static_cast<PageNumber>(*bit);
    }
    return std::nullopt;
}

std::vector<PageNumber> UsageMapRow::pagesBefore(PageNumber end) const {
    std::vector<PageNumber> pages;
    for (auto page = next(0); page && *page < end; page = next(*page + 1))
        pages.push_back(*page);
    return pages;
}

base::Bytes UsageMapRow::bytes() const {
    const Extent row = extent();
    const PageView page = store_.page(row.page);
    const auto bytes = page.bytes.slice(row.offset, row.bytes).bytes();
    return {bytes.begin(), bytes.end()};
}

bool UsageMapRow::replace(std::span<const std::uint8_t> row) {
    return DataPageEditor(store_, row_.page, mapOwner(row_.page)).replace(row_.slot, row);
}

}  // namespace jet
