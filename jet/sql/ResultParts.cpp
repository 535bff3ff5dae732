#include <algorithm>
#include <cstddef>
#include <cstring>
#include <utility>

#include "jet/sql/ResultSet.h"
#include "jet/sql/RowKeys.h"

/// Results with some of the columns or rows. This is a source of its own, so that programs that send SELECT * alone do
/// not contain it.
namespace jet::sql {

void ResultSet::keepColumns(const std::vector<std::size_t>& columns) {
    std::vector<const Column*> kept;
    kept.reserve(columns.size());
    for (const std::size_t column : columns)
        kept.push_back(columns_[column]);
    columns_ = std::move(kept);
    if (!rows_.empty()) return;
    std::erase_if(longColumns_,
                  [this](const Column* column) { return std::ranges::find(columns_, column) == columns_.end(); });
}

void RowKeys::keepTop(std::uint32_t top) {
    if (top >= rows_.size()) return;
    if (top == 0) return rows_.clear();
    const auto last = rows_.begin() + static_cast<std::ptrdiff_t>(top - 1);
    std::nth_element(rows_.begin(), last, rows_.end(), [this](const Row& a, const Row& b) { return isBefore(a, b); });
    const auto end = std::partition(last + 1, rows_.end(), [&](const Row& row) {
        return row.lengthBytes == last->lengthBytes &&
               std::memcmp(arena_.data() + row.offset, arena_.data() + last->offset, row.lengthBytes) == 0;
    });
    rows_.erase(end, rows_.end());
}

}  // namespace jet::sql
