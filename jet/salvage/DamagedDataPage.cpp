#include "jet/salvage/DamagedDataPage.h"

#include <algorithm>

namespace jet {
namespace {

constexpr std::size_t kMaxSlots = 256;
constexpr std::uint16_t kUnknownFlag = 0x2000;
/// One damaged word makes two slots impossible, its own and the next. More damage to one page is rare.
constexpr std::size_t kDamagedWords = 4;

}  // namespace

DamagedDataPage::DamagedDataPage(PageView page, std::size_t bytesThere)
    : page_(std::move(page)), bytesThere_(bytesThere), slotCount_(countSlots()) {}

DamagedDataPage DamagedDataPage::read(DamagedFile& file, PageNumber number) {
    return DamagedDataPage(file.page(number), file.bytesOf(number));
}

/// Every writer keeps the number of free bytes exact. So it confirms the number of slots, or tells it if that was
/// damaged. But it may be damaged itself, or the place of the last row may be: then nearly all slots are possible.
std::size_t DamagedDataPage::countSlots() const {
    const std::size_t stored = page_.bytes.u16(kSlotCountOffset);
    if (stored <= kMaxSlots && freeBytesAgree(stored)) return stored;
    const bool isLikely = stored <= kMaxSlots && impossibleSlots(stored) <= kDamagedWords;
    std::size_t fewest = isLikely ? 1 : kDamagedWords + 1;
    std::size_t best = isLikely ? stored : kMaxSlots + 1;
    for (std::size_t count = isLikely ? stored + 1 : 0; count <= kMaxSlots; ++count) {
        const std::size_t impossible = freeBytesAgree(count) ? impossibleSlots(count) : fewest;
        if (impossible >= fewest) continue;
        fewest = impossible;
        best = count;
    }
    if (best <= kMaxSlots) return best;
    std::size_t count = 0;
    while (count < kMaxSlots && impossibleSlots(count + 1) == 0)
        ++count;
    return count;
}

bool DamagedDataPage::freeBytesAgree(std::size_t count) const {
    const std::size_t lowest = count == 0 ? kPageSize : start(count - 1);
    return lowest == slotPlace(count) + page_.bytes.u16(kFreeBytesOffset);
}

/// How many of the first slots are outside the page, inside the slots, or above the one before.
std::size_t DamagedDataPage::impossibleSlots(std::size_t count) const {
    std::size_t impossible = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const bool isPossible =
            start(i) <= end(i) && start(i) >= slotPlace(count) && end(i) <= kPageSize && (word(i) & kUnknownFlag) == 0;
        impossible += isPossible ? 0 : 1;
    }
    return impossible;
}

DamagedSlot DamagedDataPage::slot(std::size_t index) const {
    DamagedSlot slot;
    slot.state = static_cast<SlotState>(word(index) & kSlotStateMask);
    const std::size_t from = start(index);
    const std::size_t to = end(index);
    slot.isPossible = from >= slotPlace(slotCount_) && from <= to && to <= std::min(kPageSize, bytesThere_) &&
                      (word(index) & kUnknownFlag) == 0;
    if (!slot.isPossible) return slot;
    slot.bytes = page_.bytes.bytes().subspan(from, to - from);
    const bool isAboveNext = index + 1 >= slotCount_ || start(index + 1) <= from;
    const bool isBelowOthers = index < 2 || to <= start(index - 2);
    slot.isInOrder = isAboveNext && isBelowOthers;
    return slot;
}

}  // namespace jet
