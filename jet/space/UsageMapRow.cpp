#include "jet/space/UsageMapRow.h"

#include <algorithm>
#include <bit>
#include <cassert>

#include "jet/Errors.h"
#include "jet/page/DataPageEditor.h"

namespace jet {
namespace {

constexpr std::size_t kEntryBytes = 4;

/// The first set bit at or after bit `from`.
std::optional<std::size_t> nextBit(std::span<const std::uint8_t> bits, std::size_t from) {
    for (std::size_t byte = from / 8; byte < bits.size(); ++byte) {
        const unsigned rest = bits[byte] & (byte == from / 8 ? (0xFFU << (from % 8)) & 0xFFU : 0xFFU);
        if (rest != 0) return 8 * byte + static_cast<std::size_t>(std::countr_zero(rest));
    }
    return std::nullopt;
}

}  // namespace

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
    return (extent().bytes - 1) / kEntryBytes;
}

PageNumber UsageMapRow::bitmapPage(std::size_t entry) const {
    return word(1 + kEntryBytes * entry);
}

void UsageMapRow::setBitmapPage(std::size_t entry, PageNumber page) {
    const Extent row = extent();
    assert(1 + kEntryBytes * (entry + 1) <= row.bytes);
    base::putU32(store_.change(row.page), row.offset + 1 + kEntryBytes * entry, page);
}

std::optional<UsageMapRow::Place> UsageMapRow::placeOf(PageNumber page) const {
    const auto mask = static_cast<std::uint8_t>(1U << (page % 8));
    if (isReference()) {
        const std::size_t entry = page / kBitmapPages;
        const PageNumber bitmap = entry < entryCount() ? bitmapPage(entry) : 0;
        if (bitmap == 0) return std::nullopt;
        return Place{bitmap, kBitmapBitsOffset + page % kBitmapPages / 8, mask};
    }
    const Extent row = extent();
    const PageNumber first = word(1);
    if (page < first || (page - first) / 8 >= row.bytes - kInlineBitsOffset) return std::nullopt;
    const auto bit = static_cast<std::uint8_t>(1U << ((page - first) % 8));
    return Place{row.page, row.offset + kInlineBitsOffset + (page - first) / 8, bit};
}

bool UsageMapRow::contains(PageNumber page) const {
    const auto place = placeOf(page);
    return place && (store_.page(place->page).bytes.u8(place->byte) & place->mask) != 0;
}

void UsageMapRow::put(PageNumber page, bool isSet) {
    const auto place = placeOf(page);
    assert(place);
    std::uint8_t& byte = store_.change(place->page)[place->byte];
    byte = static_cast<std::uint8_t>(isSet ? byte | place->mask : byte & ~place->mask);
}

std::optional<PageNumber> UsageMapRow::next(PageNumber from) const {
    if (!isReference()) {
        const base::Bytes row = bytes();
        const PageNumber first = base::ByteView{row}.u32(1);
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
