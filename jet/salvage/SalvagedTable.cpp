#include "jet/salvage/SalvagedTable.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

#include "jet/page/MovedRow.h"
#include "jet/salvage/PageScan.h"

namespace jet {

class SalvagedTable::Scan {
public:
    Scan(const SalvagedTable& table, const Visit& visit, const Report& report)
        : table_(table), visit_(visit), report_(report) {}

    void run() {
        for (const PageNumber page : table_.pages_)
            scanPage(DamagedDataPage::read(*table_.file_, page));
        if (lost_ == 0 && table_.lostPages_.empty() && found_ >= table_.definition().rowCount) return;
        for (const RowPointer place : hidden_) {
            if (!targets_.contains(place.packed())) readAt(place, place);
        }
    }

private:
    void scanPage(const DamagedDataPage& page) {
        for (std::size_t i = 0; i < page.slotCount(); ++i) {
            const DamagedSlot slot = page.slot(i);
            const RowPointer place{page.number(), static_cast<std::uint8_t>(i)};
            if (slot.state == SlotState::Live) {
                read(slot, place, place);
            } else if (slot.state == SlotState::Hidden) {
                hidden_.push_back(place);
            } else if (slot.state == SlotState::Moved) {
                follow(slot, place);
            }
        }
    }

    void follow(DamagedSlot slot, RowPointer place) {
        for (std::size_t moves = 0; moves < kMaxMoves && slot.isPossible && slot.bytes.size() >= kRowPointerBytes;
             ++moves) {
            const RowPointer target = pointerAt(slot.bytes);
            if (!std::ranges::binary_search(table_.pages_, target.page)) break;
            page_ = DamagedDataPage::read(*table_.file_, target.page);
            if (target.slot >= page_.slotCount()) break;
            slot = page_.slot(target.slot);
            if (slot.state == SlotState::Moved) continue;
            if (slot.state != SlotState::Hidden || !targets_.insert(target.packed()).second) break;
            read(slot, place, target);
            return;
        }
        ++lost_;
        tell(place, u"Der Verweis auf die verschobene Zeile führt nicht zu ihr");
    }

    void readAt(RowPointer place, RowPointer dataPlace) {
        page_ = DamagedDataPage::read(*table_.file_, dataPlace.page);
        read(page_.slot(dataPlace.slot), place, dataPlace);
    }

    void read(const DamagedSlot& slot, RowPointer place, RowPointer dataPlace) {
        base::Text reason;
        if (readDamagedRow(*table_.file_, table_.definition(), slot, dataPlace, row_, reason)) {
            ++found_;
            visit_(place, row_);
        } else {
            ++lost_;
            tell(place, reason);
        }
    }

    void tell(RowPointer place, const base::Text& reason) {
        if (report_) report_(place, reason);
    }

    const SalvagedTable& table_;
    const Visit& visit_;
    const Report& report_;
    DamagedRow row_;
    DamagedDataPage page_;  ///< of the data of a moved row
    std::size_t found_ = 0;
    std::size_t lost_ = 0;
    std::vector<RowPointer> hidden_;
    std::unordered_set<std::uint32_t> targets_;
};

SalvagedTable::SalvagedTable(DamagedFile& file, DamagedDefinition definition, std::vector<PageNumber> pages,
                             std::vector<PageNumber> lostPages)
    : file_(&file), definition_(std::move(definition)), pages_(std::move(pages)), lostPages_(std::move(lostPages)) {}

bool SalvagedTable::goesBeyondFile() const {
    return readDamagedMap(*file_, definition().ownedPages).goesBeyondFile;
}

void SalvagedTable::eachRow(const Visit& visit, const Report& report) const {
    Scan(*this, visit, report).run();
}

}  // namespace jet
