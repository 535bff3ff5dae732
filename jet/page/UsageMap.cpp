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
            const PageNumber first = bytes.u32(1);
            map.pieces_.push_back({first, copyOf(bytes.from(kInlineBitsOffset).bytes())});
        } else if (kind == kReferenceMap) {
            for (std::uint32_t entry = 0; 5 + 4 * std::size_t{entry} <= bytes.size(); ++entry) {
                const PageNumber number = bytes.u32(1 + 4 * std::size_t{entry});
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
        std::size_t bit = from > piece.firstPage ? from - piece.firstPage : 0;
        for (std::size_t byte = bit / 8; byte < piece.bits.size(); ++byte) {
            const unsigned rest = piece.bits[byte] & (0xFFU << (bit % 8)) & 0xFFU;
            if (rest != 0) {
                const std::uint64_t page =
                    std::uint64_t{piece.firstPage} + 8 * byte + static_cast<unsigned>(std::countr_zero(rest));
                // No file has a page beyond the largest number. So reading that page gives the right error.
                return static_cast<PageNumber>(std::min<std::uint64_t>(page, 0xFFFFFFFF));
            }
            bit = 0;
        }
    }
    return std::nullopt;
}

base::Bytes UsageMap::inlineRow(PageNumber firstPage, std::span<const PageNumber> pages, std::size_t rowBytes) {
    assert(rowBytes >= kInlineBitsOffset && firstPage % 8 == 0);
    base::Bytes row(rowBytes, 0);
    row[0] = kInlineMap;
    base::putU32(row, 1, firstPage);
    for (const PageNumber page : pages) {
        const std::size_t bit = page - firstPage;
        assert(page >= firstPage && kInlineBitsOffset + bit / 8 < rowBytes);
        row[kInlineBitsOffset + bit / 8] |= static_cast<std::uint8_t>(1U << (bit % 8));
    }
    return row;
}

base::Bytes UsageMap::referenceRow(std::span<const PageNumber> bitmapPages, std::size_t rowBytes) {
    assert(rowBytes >= 1 + 4 * bitmapPages.size());
    base::Bytes row(rowBytes, 0);
    row[0] = kReferenceMap;
    for (std::size_t i = 0; i < bitmapPages.size(); ++i)
        base::putU32(row, 1 + 4 * i, bitmapPages[i]);
    return row;
}

std::size_t longerMapRow(std::size_t rowBytes, std::size_t neededBytes) {
    while (rowBytes < neededBytes)
        rowBytes += kMapRowStepBytes;
    return rowBytes;
}

void clearBitmapPage(std::span<std::uint8_t> page, std::uint8_t fill) {
    assert(page.size() == kPageSize);
    std::fill(page.begin(), page.end(), fill);
    beginPage(page, PageKind::UsageBitmap);
    base::putU16(page, 2, 0);
}

}  // namespace jet
