#include "jet/salvage/DamagedRow.h"

#include <algorithm>
#include <utility>

#include "jet/Errors.h"
#include "jet/table/LongValue.h"
#include "jet/table/RowCodec.h"
#include "jet/value/ValueCodec.h"

namespace jet {
namespace {

constexpr std::size_t kCountBytes = 2;

/// The text of a damage error without its place ("Seite 5, Zeile 3: ") and its full stop.
base::Text reasonOf(const base::RuntimeError& error) {
    base::Text reason = error.description();
    if (const auto damage = damageOf(error)) reason = damage->substr(damage->find(u": ") + 2);
    if (reason.ends_with(u'.')) reason.pop_back();
    return reason;
}

std::span<const std::uint8_t> partAt(const DamagedDataPage& page, RowPointer part) {
    if (part.slot < page.slotCount()) {
        const DamagedSlot slot = page.slot(part.slot);
        if (slot.isPossible && slot.state == SlotState::Live) return slot.bytes;
    }
    throw damagedRow(part, u"Der Teil eines langen Werts fehlt");
}

DamagedDataPage partPage(DamagedFile& file, RowPointer part) {
    if (part.page == 0 || part.page >= file.pageCount())
        throw damagedRow(part, u"Der Teil eines langen Werts liegt außerhalb der Datei");
    return DamagedDataPage::read(file, part.page);
}

base::Bytes readDamagedChain(DamagedFile& file, const LongValueReference& reference, RowPointer place) {
    base::Bytes value;
    // Each part adds at least one byte, and the sum must not exceed the length. So a loop comes to an end.
    for (RowPointer part = reference.first; !part.isNone();) {
        const DamagedDataPage page = partPage(file, part);
        const auto bytes = partAt(page, part);
        if (bytes.size() <= kRowPointerBytes || bytes.size() - kRowPointerBytes > reference.lengthBytes - value.size())
            throw damagedRow(part, u"Der Teil eines langen Werts hat eine falsche Länge");
        value.insert(value.end(), bytes.begin() + kRowPointerBytes, bytes.end());
        part = pointerAt(bytes);
    }
    if (value.size() != reference.lengthBytes) throw damagedRow(place, u"Einem langen Wert fehlen Teile");
    return value;
}

class RowReader {
public:
    RowReader(DamagedFile& file, const TableDefinition& definition, RowPointer place, DamagedRow& row)
        : file_(file), definition_(definition), place_(place), row_(row) {}

    /// @return false if the counts and offsets of the row are impossible
    bool read(std::span<const std::uint8_t> bytes, base::Text& reason) {
        clear();
        RowView view;
        try {
            view = RowView(bytes, definition_, place_);
        } catch (const base::RuntimeError& error) {
            reason = reasonOf(error);
            return false;
        }
        for (const Column& column : definition_.columns)
            readValue(column, [&] { return value(view, column); });
        return true;
    }

    /// All values can be read, except for parts on other pages, and the null mask has no bits after the last column.
    bool isPerfect(std::span<const std::uint8_t> bytes) const {
        const unsigned columns = base::ByteView{bytes}.u16(0);
        return lostHere_ == 0 && (columns % 8 == 0 || (bytes.back() >> (columns % 8)) == 0);
    }

    /// The fixed area and the null mask, if the row has all columns.
    bool readFixedArea(std::span<const std::uint8_t> bytes) {
        clear();
        const std::size_t maskBytes = nullMaskBytes(definition_.columnsEver);
        if (bytes.size() < kCountBytes + definition_.fixedAreaBytes() + maskBytes) return false;
        const auto mask = bytes.last(maskBytes);
        const auto bit = [&](std::size_t number) { return ((mask[number / 8] >> (number % 8)) & 1U) != 0; };
        if (definition_.columnsEver % 8 != 0 && (mask.back() >> (definition_.columnsEver % 8)) != 0) return false;
        if (base::ByteView{bytes}.u16(0) != definition_.columnsEver) return false;
        for (const Column& column : definition_.columns) {
            if (column.type == ColumnType::Boolean)
                row_.values[column.number] = bit(column.number);
            else if (!column.isFixed() && bit(column.number))
                row_.lost.push_back({&column, u"Wo der Wert in der Zeile steht, ist nicht lesbar"});
            else if (column.isFixed() && bit(column.number))
                readValue(column, [&] {
                    return decodeValue(column, bytes.subspan(kCountBytes + column.fixedOffset, column.lengthBytes),
                                       place_);
                });
        }
        return true;
    }

private:
    void clear() {
        row_.values.assign(definition_.columnsEver, base::Null{});
        row_.lost.clear();
        lostHere_ = 0;
    }

    template <typename Read>
    void readValue(const Column& column, Read&& read) {
        try {
            row_.values[column.number] = std::forward<Read>(read)();
        } catch (const base::RuntimeError& error) {
            row_.lost.push_back({&column, reasonOf(error)});
            lostHere_ += isElsewhere_ ? 0 : 1;
        }
        isElsewhere_ = false;
    }

    base::Value value(const RowView& view, const Column& column) {
        if (column.type == ColumnType::Boolean) return view.flag(column);
        if (view.isNull(column)) return base::Null{};
        const auto stored = view.stored(column);
        if (!column.isLongValue()) return decodeValue(column, stored, place_);
        isElsewhere_ = stored.size() >= kLongValueReferenceBytes;
        return decodeValue(column, readDamagedLongValue(file_, stored, place_), place_);
    }

    DamagedFile& file_;
    const TableDefinition& definition_;
    RowPointer place_;
    DamagedRow& row_;
    std::size_t lostHere_ = 0;  ///< values lost through the bytes of the row itself
    bool isElsewhere_ = false;  ///< the value being read is not in the row
};

/// The row with the counts that a new row of the table has. They are at both ends: that of the columns first, that of
/// the variable columns before the null mask. Empty if the row has no value at all, as bytes of zero do not.
base::Bytes withCounts(std::span<const std::uint8_t> bytes, const TableDefinition& definition) {
    base::Bytes changed(bytes.begin(), bytes.end());
    const std::size_t maskBytes = nullMaskBytes(definition.columnsEver);
    if (changed.size() < kCountBytes + definition.fixedAreaBytes() + maskBytes + 2) return {};
    if (std::ranges::all_of(bytes.last(maskBytes), [](std::uint8_t byte) { return byte == 0; })) return {};
    base::putU16(changed, 0, definition.columnsEver);
    if (definition.variableColumnsEver != 0)
        base::putU16(changed, changed.size() - maskBytes - 2, definition.variableColumnsEver);
    return changed;
}

}  // namespace

bool readDamagedRow(DamagedFile& file, const TableDefinition& definition, const DamagedSlot& slot, RowPointer place,
                    DamagedRow& row, base::Text& reason) {
    RowReader reader(file, definition, place, row);
    if (!slot.isPossible) {
        reason = u"Sein Platz auf der Seite ist zerstört";
        return false;
    }
    const bool isRead = reader.read(slot.bytes, reason);
    if (isRead && (slot.isInOrder || reader.isPerfect(slot.bytes))) return true;
    if (!isRead) {
        const base::Bytes changed = withCounts(slot.bytes, definition);
        base::Text ignored;
        if (!changed.empty() && reader.read(changed, ignored) && reader.isPerfect(changed)) return true;
        if (slot.isInOrder && reader.readFixedArea(slot.bytes)) return true;
        return false;
    }
    reason = u"Die Plätze der Zeilen auf der Seite widersprechen sich";
    return false;
}

base::Bytes readDamagedLongValue(DamagedFile& file, std::span<const std::uint8_t> stored, RowPointer place) {
    if (stored.empty()) return {};
    const LongValueReference reference = LongValueReference::read(stored, place);
    if (reference.lengthBytes > std::uint64_t{file.pageCount()} * kPageSize)
        throw damagedRow(place, u"Ein langer Wert ist länger als die Datei");
    if (reference.kind == LongValueKind::Chain) return readDamagedChain(file, reference, place);
    base::Bytes value;
    if (reference.kind == LongValueKind::Inline) {
        value.assign(stored.begin() + kLongValueReferenceBytes, stored.end());
    } else {
        const DamagedDataPage page = partPage(file, reference.first);
        const auto bytes = partAt(page, reference.first);
        value.assign(bytes.begin(), bytes.end());
    }
    if (value.size() != reference.lengthBytes) throw damagedRow(place, u"Ein langer Wert hat eine falsche Länge");
    return value;
}

}  // namespace jet
