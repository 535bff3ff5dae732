#include "jet/sql/RowKeys.h"

#include <algorithm>
#include <cstring>
#include <span>

#include "jet/index/IndexKey.h"

namespace jet::sql {

namespace {

std::uint64_t beginningOf(std::span<const std::uint8_t> key) {
    std::uint64_t beginning = 0;
    for (std::size_t i = 0; i < sizeof(beginning); ++i)
        beginning = (beginning << 8U) | (i < key.size() ? key[i] : 0U);
    return beginning;
}

/// Appends the key that an ascending index has for the value; for a descending order, its bytes are inverted. The keys
/// of a real descending index are not used: they put decimals in another order, and empty byte values in any place.
/// Here an empty byte value comes before all others.
void appendOrderPart(base::Bytes& key, const Column& column, const base::Value& value, bool descending) {
    constexpr std::size_t kEmptyGroupBytes = 9;
    const std::size_t start = key.size();
    appendKeyPart(key, column, value, true);
    const auto* bytes = std::get_if<base::Bytes>(&value);
    if (bytes != nullptr && bytes->empty()) key.resize(key.size() + kEmptyGroupBytes);
    for (std::size_t i = start; descending && i < key.size(); ++i)
        key[i] = static_cast<std::uint8_t>(~key[i]);
}

}  // namespace

RowKeys::RowKeys(const ResultSet& rows, const std::vector<OrderColumn>& columns) : rows_(rows.rowCount()) {
    for (std::uint32_t row = 0; row < rows_.size(); ++row) {
        const std::size_t offset = arena_.size();
        const ResultRow fields = rows.row(row);
        for (const OrderColumn& column : columns)
            appendOrderPart(arena_, rows.column(column.column), fields.value(column.column), column.descending);
        const auto key = std::span(arena_).subspan(offset);
        rows_[row] = {beginningOf(key), offset, key.size(), row};
    }
}

/// No key is a prefix of another one. So two keys are equal if their bytes are, up to the end of the shorter one.
bool RowKeys::isBefore(const Row& a, const Row& b) const {
    if (a.beginning != b.beginning) return a.beginning < b.beginning;
    const std::size_t shared = std::min(a.lengthBytes, b.lengthBytes);
    const int order = std::memcmp(arena_.data() + a.offset, arena_.data() + b.offset, shared);
    if (order != 0) return order < 0;
    if (a.lengthBytes != b.lengthBytes) return a.lengthBytes < b.lengthBytes;
    return a.number < b.number;
}

std::vector<std::uint32_t> RowKeys::sorted() {
    std::sort(rows_.begin(), rows_.end(), [this](const Row& a, const Row& b) { return isBefore(a, b); });
    std::vector<std::uint32_t> order;
    order.reserve(rows_.size());
    for (const Row& row : rows_)
        order.push_back(row.number);
    return order;
}

}  // namespace jet::sql
