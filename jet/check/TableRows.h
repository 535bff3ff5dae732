#pragma once

#include <optional>
#include <vector>

#include "jet/check/Findings.h"
#include "jet/table/Table.h"

namespace jet {

/// The live rows of a table. The checker goes over them several times; damaged rows are reported once and then skipped.
/// Every slot has a number, counted from 0, so that facts about rows fit into plain arrays.
class TableRows {
public:
    explicit TableRows(const Table& table) : table_(table) {}

    const Table& table() const { return table_; }

    /// Adds a sound data page. Pages must be added in ascending order.
    void addPage(PageNumber page, std::size_t slotCount) {
        pages_.push_back({page, slotCount_});
        slotCount_ += slotCount;
    }

    std::size_t slotCount() const { return slotCount_; }
    bool hasPage(PageNumber page) const { return find(page) != nullptr; }
    std::optional<std::size_t> slotNumber(RowPointer row) const;
    RowPointer rowAt(std::size_t slotNumber) const;

    /// Calls visit(slot number, pointer, view) for each live row. The view is null if the row cannot be read.
    template <typename Visit>
    void each(Visit&& visit) const {
        for (const Page& known : pages_) {
            DataPage page;
            passingOverDamage([&] { page = DataPage::read(table_.source(), known.number, table_.definition().page); });
            for (std::size_t i = 0; i < page.slotCount(); ++i)
                visitSlot(page, i, known.firstSlot + i, visit);
        }
    }

private:
    struct Page {
        PageNumber number;
        std::size_t firstSlot;
    };
    const Page* find(PageNumber page) const;

    template <typename Visit>
    void visitSlot(const DataPage& page, std::size_t i, std::size_t slotNumber, Visit&& visit) const {
        const Slot slot = page.slot(i);
        if (!isRow(slot.state)) return;
        const RowPointer pointer{page.number(), static_cast<std::uint8_t>(i)};
        Row moved;
        RowView view;
        bool isSound = false;
        passingOverDamage([&] {
            if (slot.state == SlotState::Moved) {
                moved = table_.rowAt(pointer);
                view = moved.view;
            } else {
                view = RowView(slot.bytes, table_.definition(), pointer);
            }
            isSound = true;
        });
        visit(slotNumber, pointer, isSound ? &view : nullptr);
    }

    const Table& table_;
    std::vector<Page> pages_;
    std::size_t slotCount_ = 0;
};

}  // namespace jet
