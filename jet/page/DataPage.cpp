#include "jet/page/DataPage.h"

#include <algorithm>
#include <cassert>

#include "jet/Errors.h"

namespace jet {
namespace {

constexpr std::uint16_t kUnknownFlag = 0x2000;
/// A row pointer has one byte for the slot number.
constexpr std::size_t kMaxSlots = 256;

}  // namespace

DataPage::DataPage(PageView page) : page_(std::move(page)) {
    if (page_.kind() != PageKind::Data) {
        throw damaged(page_.number, u"Seitenart " + base::decimal(page_.bytes.u8(0)) + u" statt einer Datenseite");
    }
    slotCount_ = page_.bytes.u16(kSlotCountOffset);
    if (slotCount_ > kMaxSlots) {
        throw damaged(page_.number, base::decimal(slotCount_) + u" Zeilen auf einer Seite");
    }
    std::size_t end = kPageSize;
    const std::size_t lowest = slotPlace(slotCount_);
    for (std::size_t i = 0; i < slotCount_; ++i) {
        const std::uint16_t word = page_.bytes.u16(slotPlace(i));
        const std::size_t start = word & kSlotStartMask;
        if (start > end || start < lowest || (word & kUnknownFlag) != 0) {
            throw damaged(page_.number, u"Der Zeilenversatz " + base::decimal(word) + u" der Zeile " +
                                            base::decimal(i) + u" ist unmöglich");
        }
        end = start;
    }
}

DataPage DataPage::read(PageSource& source, PageNumber number, std::uint32_t owner) {
    DataPage page(source.page(number));
    if (page.owner() != owner) {
        throw damaged(number,
                      u"Die Seite gehört zu " + base::decimal(page.owner()) + u" statt zu " + base::decimal(owner));
    }
    return page;
}

Slot DataPage::slot(std::size_t index) const {
    if (index >= slotCount_) {
        throw damaged(page_.number, u"Die Zeile " + base::decimal(index) + u" gibt es nicht");
    }
    const std::uint16_t word = page_.bytes.u16(slotPlace(index));
    const std::size_t start = word & kSlotStartMask;
    const std::size_t end = index == 0 ? kPageSize : page_.bytes.u16(slotPlace(index - 1)) & kSlotStartMask;
    return {static_cast<SlotState>(word & kSlotStateMask), page_.bytes.bytes().subspan(start, end - start)};
}

bool DataPage::hasLiveRows() const {
    for (std::size_t i = 0; i < slotCount_; ++i) {
        if (isRow(slot(i).state)) return true;
    }
    return false;
}

void clearDataPage(std::span<std::uint8_t> page, std::uint32_t owner, std::uint32_t stamp) {
    assert(page.size() == kPageSize);
    std::fill(page.begin(), page.end(), std::uint8_t{0});
    beginPage(page, PageKind::Data);
    base::putU16(page, kFreeBytesOffset, kPageSize - kDataPageHeaderBytes);
    base::putU32(page, kOwnerOffset, owner);
    base::putU32(page, kStampOffset, stamp);
}

std::optional<std::uint8_t> appendRow(std::span<std::uint8_t> page, std::span<const std::uint8_t> row,
                                      SlotState state) {
    const base::ByteView bytes{page};
    const std::size_t count = bytes.u16(kSlotCountOffset);
    const std::size_t lowest = count == 0 ? kPageSize : bytes.u16(slotPlace(count - 1)) & kSlotStartMask;
    assert(lowest >= slotPlace(count));
    const std::size_t free = lowest - slotPlace(count);
    if (count >= kMaxSlotsOfPage || row.size() + kSlotBytes > free) return std::nullopt;
    const std::size_t start = lowest - row.size();
    std::copy(row.begin(), row.end(), page.begin() + static_cast<std::ptrdiff_t>(start));
    base::putU16(page, slotPlace(count), static_cast<std::uint16_t>(start | static_cast<std::uint16_t>(state)));
    base::putU16(page, kSlotCountOffset, static_cast<std::uint16_t>(count + 1));
    base::putU16(page, kFreeBytesOffset, static_cast<std::uint16_t>(free - row.size() - kSlotBytes));
    return static_cast<std::uint8_t>(count);
}

}  // namespace jet
