#include "jet/table/LongValue.h"

#include <algorithm>

#include "base/ByteView.h"
#include "jet/Errors.h"
#include "jet/page/DataPage.h"

namespace jet {
namespace {

constexpr std::uint32_t kKindMask = 0xC0000000;

void append(base::Bytes& value, std::span<const std::uint8_t> bytes) {
    value.insert(value.end(), bytes.begin(), bytes.end());
}

/// The bytes are valid only as long as the page.
std::span<const std::uint8_t> partAt(const DataPage& page, RowPointer part) {
    const Slot slot = page.slot(part.slot);
    if (slot.state != SlotState::Live) throw damagedRow(part, u"Der Teil eines langen Werts ist gelöscht");
    return slot.bytes;
}

base::Bytes readChain(PageSource& source, const LongValueReference& reference, RowPointer place) {
    base::Bytes value;
    // Each part adds at least one byte, and the sum must not exceed the length. So a loop comes to an end.
    for (RowPointer part = reference.first; !part.isNone();) {
        const DataPage page = DataPage::read(source, part.page, kLongValueOwner);
        const auto bytes = partAt(page, part);
        if (bytes.size() <= kRowPointerBytes ||
            bytes.size() - kRowPointerBytes > reference.lengthBytes - value.size()) {
            throw damagedRow(part, u"Der Teil eines langen Werts hat " + base::decimal(bytes.size()) + u" Bytes");
        }
        append(value, bytes.subspan(kRowPointerBytes));
        part = pointerAt(bytes);
    }
    if (value.size() != reference.lengthBytes) {
        throw damagedRow(place, u"Ein langer Wert hat " + base::decimal(value.size()) + u" statt " +
                                    base::decimal(reference.lengthBytes) + u" Bytes");
    }
    return value;
}

}  // namespace

LongValueReference LongValueReference::read(std::span<const std::uint8_t> stored, RowPointer place) {
    if (stored.size() < kLongValueReferenceBytes)
        throw damagedRow(place, u"Der Verweis auf einen langen Wert ist zu kurz");
    const base::ByteView bytes{stored};
    const std::uint32_t word = bytes.u32(0);
    const std::uint32_t kind = word & kKindMask;
    if (kind == kKindMask) throw damagedRow(place, u"Die Art eines langen Werts ist unbekannt");
    return {static_cast<LongValueKind>(kind), word & ~kKindMask, RowPointer::unpack(bytes.u32(4)), bytes.u32(8)};
}

void LongValueReference::append(base::Bytes& bytes) const {
    base::appendLittleEndian(bytes, static_cast<std::uint32_t>(kind) | lengthBytes, 4);
    base::appendLittleEndian(bytes, first.packed(), 4);
    base::appendLittleEndian(bytes, stamp, 4);
}

base::Bytes readLongValue(PageSource& source, std::span<const std::uint8_t> stored, RowPointer place) {
    if (stored.empty()) return {};
    const LongValueReference reference = LongValueReference::read(stored, place);
    if (reference.lengthBytes > std::uint64_t{source.pageCount()} * kPageSize) {
        throw damagedRow(place, u"Ein langer Wert ist länger als die Datei");
    }
    base::Bytes value;
    switch (reference.kind) {
        case LongValueKind::Inline:
            append(value, stored.subspan(kLongValueReferenceBytes));
            break;
        case LongValueKind::SingleRow: {
            const DataPage page = DataPage::read(source, reference.first.page, kLongValueOwner);
            append(value, partAt(page, reference.first));
            break;
        }
        case LongValueKind::Chain:
            return readChain(source, reference, place);
    }
    if (value.size() != reference.lengthBytes) {
        throw damagedRow(place, u"Ein langer Wert hat " + base::decimal(value.size()) + u" statt " +
                                    base::decimal(reference.lengthBytes) + u" Bytes");
    }
    return value;
}

base::Bytes inlineLongValue(std::span<const std::uint8_t> value) {
    base::Bytes stored;
    LongValueReference{LongValueKind::Inline, static_cast<std::uint32_t>(value.size()), {}, 0}.append(stored);
    append(stored, value);
    return stored;
}

}  // namespace jet
