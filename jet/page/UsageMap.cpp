#include "jet/page/UsageMap.h"

#include <algorithm>
#include <bit>
#include <cassert>

#include "base/ByteView.h"
#include "jet/Errors.h"
#include "jet/page/DataPage.h"

namespace jet {
namespace {

base::Bytes copyOf(std::span<const std::uint8_t> bytes) {
    return {bytes.begin(), bytes.end()};
}

}  // namespace

std::optional<std::size_t> nextBit(std::span<const std::uint8_t> bits, std::size_t from) {
    unsigned wanted = (0xFFU << (from % 8)) & 0xFFU;
    for (std::size_t byte = from / 8; byte < bits.size(); ++byte) {
        const unsigned rest = bits[byte] & wanted;
        if (rest != 0) return 8 * byte + static_cast<std::size_t>(std::countr_zero(rest));
        wanted = 0xFF;
    }
    return std::nullopt;
}

UsageMap UsageMap::read(PageSource& source, RowPointer row) {
    UsageMap map;
    if (row.isNone()) return map;
    const DataPage page = DataPage::read(source, row.page, mapOwner(row.page));
    const Slot slot = page.slot(row.slot);
    if (slot.state != SlotState::Live) throw damagedRow(row, u"Die Belegungskarte ist gelöscht");
    onPage(row.page, [&] {
        const base::ByteView bytes{slot.bytes};
        const std::uint8_t kind = bytes.u8(0);
        if (kind == kInlineMap) {
            const PageNumber first = bytes.u32(kFirstPageOffset);
            map.pieces_.push_back({first, copyOf(bytes.from(kInlineBitsOffset).bytes())});
        } else if (kind == kReferenceMap) {
            for (std::uint32_t entry = 0; entry < mapEntryCount(bytes.size()); ++entry) {
                const PageNumber number = bytes.u32(mapEntryOffset(entry));
                if (number == 0) continue;
                const PageView bitmap = pageOfKind(source, number, PageKind::UsageBitmap);
                map.pieces_.push_back({entry * kBitmapPages, copyOf(bitmap.bytes.from(kBitmapBitsOffset).bytes())});
            }
        } else {
            throw damagedRow(row, u"Die Art " + base::decimal(kind) + u" einer Belegungskarte ist unbekannt");
        }
    });
    return map;
}

bool UsageMap::contains(PageNumber page) const {
    return next(page) == page;
}

std::optional<PageNumber> UsageMap::next(PageNumber from) const {
    for (const Piece& piece : pieces_) {
        const auto bit = nextBit(piece.bits, from > piece.firstPage ? from - piece.firstPage : 0);
        // No file has a page with the largest number, so reading that page gives the right error.
        if (bit)
            return static_cast<PageNumber>(std::min<std::uint64_t>(std::uint64_t{piece.firstPage} + *bit, 0xFFFFFFFF));
    }
    return std::nullopt;
}

base::Bytes UsageMap::inlineRow(PageNumber firstPage, std::span<const PageNumber> pages, std::size_t rowBytes) {
    assert(rowBytes >= kInlineBitsOffset && firstPage % 8 == 0);
    base::Bytes row(rowBytes, 0);
    row[0] = kInlineMap;
    base::putU32(row, kFirstPageOffset, firstPage);
    const auto bits = std::span(row).subspan(kInlineBitsOffset);
    for (const PageNumber page : pages) {
        assert(page >= firstPage && (page - firstPage) / 8 < bits.size());
        putBit(bits, page - firstPage);
    }
    return row;
}

base::Bytes UsageMap::referenceRow(std::span<const PageNumber> bitmapPages, std::size_t rowBytes) {
    assert(rowBytes >= mapEntryOffset(bitmapPages.size()));
    base::Bytes row(rowBytes, 0);
    row[0] = kReferenceMap;
    for (std::size_t i = 0; i < bitmapPages.size(); ++i)
        base::putU32(row, mapEntryOffset(i), bitmapPages[i]);
    return row;
}

std::size_t longerMapRow(std::size_t rowBytes, std::size_t neededBytes) {
    while (rowBytes < neededBytes)
        rowBytes += kMapRowStepBytes;
    return rowBytes;
}

void clearBitmapPage(std::span<std::uint8_t> page, std::uint8_t fill) {
    assert(page.size() == kPageSize);
    std::ranges::fill(page.first(kBitmapBitsOffset), std::uint8_t{0});
    beginPage(page, PageKind::UsageBitmap);
    std::ranges::fill(page.subspan(kBitmapBitsOffset), fill);
}

}  // namespace jet
