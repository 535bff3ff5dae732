#include "jet/page/MovedRow.h"

#include "jet/Errors.h"

namespace jet {

MovedRow followMovedRow(PageSource& source, RowPointer row, Slot slot, std::uint32_t owner) {
    MovedRow moved;
    if (slot.bytes.size() < kRowPointerBytes)
        throw damagedRow(row, u"Der Verweis auf die verschobene Zeile ist zu kurz");
    while (moved.places.size() < kMaxMoves) {
        const RowPointer target = pointerAt(slot.bytes);
        moved.places.push_back(target);
        moved.page = DataPage::read(source, target.page, owner);
        slot = moved.page.slot(target.slot);
        moved.bytes = slot.bytes;
        if (slot.state == SlotState::Hidden) return moved;
        if (slot.state != SlotState::Moved || slot.bytes.size() < kRowPointerBytes) {
            throw damagedRow(row, u"Die verschobene Zeile steht nicht auf Seite " + base::decimal(target.page) +
                                      u", Zeile " + base::decimal(target.slot));
        }
    }
    throw damagedRow(row, u"Die Verweise auf die verschobene Zeile bilden eine Schleife");
}

}  // namespace jet
