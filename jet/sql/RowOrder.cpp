#include "jet/sql/RowOrder.h"

#include <algorithm>
#include <numeric>
#include <optional>
#include <utility>

#include "jet/Errors.h"
#include "jet/tree/IndexCursor.h"

namespace jet::sql {

namespace {

/// Finds rows by their pointers. The rows are in the order of their pointers, so those of one page are next to each
/// other and differ in the slot.
class RowFinder {
public:
    explicit RowFinder(const ResultSet& rows) {
        const std::size_t count = rows.rowCount();
        if (count == 0) return;
        firstPage_ = rows.pointer(0).page;
        firstOfPage_.resize(std::size_t{rows.pointer(count - 1).page} - firstPage_ + 2);
        slots_.reserve(count);
        for (std::size_t row = 0; row < count; ++row) {
            const RowPointer pointer = rows.pointer(row);
            ++firstOfPage_[pointer.page - firstPage_ + 1];
            slots_.push_back(pointer.slot);
        }
        std::partial_sum(firstOfPage_.begin(), firstOfPage_.end(), firstOfPage_.begin());
    }

    std::optional<std::uint32_t> find(RowPointer pointer) const {
        const std::size_t page = std::size_t{pointer.page} - firstPage_;
        if (pointer.page < firstPage_ || page + 1 >= firstOfPage_.size()) return std::nullopt;
        // If no earlier slot of the page is free, the slot is also the row's position in the page; otherwise that is
        // lower.
        const std::uint32_t begin = firstOfPage_[page];
        const std::uint32_t end = firstOfPage_[page + 1];
        for (std::uint32_t row = std::min(end, begin + pointer.slot + 1); row > begin; --row) {
            if (slots_[row - 1] == pointer.slot) return row - 1;
            if (slots_[row - 1] < pointer.slot) break;
        }
        return std::nullopt;
    }

private:
    PageNumber firstPage_ = 0;
    std::vector<std::uint32_t> firstOfPage_;  ///< for each page from firstPage_ on; the last entry counts all rows
    std::vector<std::uint8_t> slots_;         ///< for each row
};

}  // namespace

std::vector<std::uint32_t> orderByIndex(PageSource& source, const ResultSet& rows, const TableDefinition& definition,
                                        const IndexDefinition& index) {
    const std::size_t count = rows.rowCount();
    const RowFinder finder(rows);
    std::vector<bool> met(count);
    std::vector<std::uint32_t> order;
    order.reserve(count);
    IndexCursor cursor(source, definition.page, index.rootPage);
    for (cursor.first(); cursor.isAtEntry(); cursor.next()) {
        const auto row = finder.find(cursor.row());
        if (!row) throw damaged(cursor.leafPage(), u"Ein Indexeintrag zeigt auf eine Zeile, die es nicht gibt");
        if (met[*row]) throw damaged(cursor.leafPage(), u"Der Index enthält eine Zeile zweimal");
        met[*row] = true;
        order.push_back(*row);
    }
    if (order.size() != count) throw damaged(index.rootPage, u"Im Index fehlen Zeilen der Tabelle");
    return order;
}

}  // namespace jet::sql
