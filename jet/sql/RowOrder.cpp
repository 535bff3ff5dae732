#include "jet/sql/RowOrder.h"

#include <algorithm>
#include <cstring>
#include <numeric>
#include <optional>
#include <utility>

#include "jet/Errors.h"
#include "jet/index/IndexKey.h"
#include "jet/tree/IndexCursor.h"

namespace jet::sql {

namespace {

/// A row's key in the arena, with its first eight bytes at hand: they decide most comparisons.
struct KeyedRow {
    std::uint64_t beginning = 0;
    std::size_t offset = 0;
    std::size_t lengthBytes = 0;
    std::uint32_t row = 0;
};

std::uint64_t beginningOf(std::span<const std::uint8_t> key) {
    std::uint64_t beginning = 0;
    for (std::size_t i = 0; i < sizeof(beginning); ++i)
        beginning = (beginning << 8U) | (i < key.size() ? key[i] : 0U);
    return beginning;
}

/// No key is the beginning of another one, so equal bytes up to the shorter end are equal keys.
bool isBefore(const base::Bytes& arena, const KeyedRow& a, const KeyedRow& b) {
    if (a.beginning != b.beginning) return a.beginning < b.beginning;
    const std::size_t shared = std::min(a.lengthBytes, b.lengthBytes);
    const int order = std::memcmp(arena.data() + a.offset, arena.data() + b.offset, shared);
    if (order != 0) return order < 0;
    if (a.lengthBytes != b.lengthBytes) return a.lengthBytes < b.lengthBytes;
    return a.row < b.row;
}

bool areEqual(const base::Bytes& arena, const KeyedRow& a, const KeyedRow& b) {
    return a.lengthBytes == b.lengthBytes &&
           std::memcmp(arena.data() + a.offset, arena.data() + b.offset, a.lengthBytes) == 0;
}

/// Keeps the first rows and those equal to the last of them, so that only these need to be sorted.
void keepTop(const base::Bytes& arena, std::vector<KeyedRow>& keys, std::uint32_t top) {
    if (top >= keys.size()) return;
    if (top == 0) return keys.clear();
    const auto last = keys.begin() + (top - 1);
    std::nth_element(keys.begin(), last, keys.end(),
                     [&](const KeyedRow& a, const KeyedRow& b) { return isBefore(arena, a, b); });
    const auto end =
        std::partition(last + 1, keys.end(), [&](const KeyedRow& row) { return areEqual(arena, row, *last); });
    keys.erase(end, keys.end());
}

/// What an ascending index has for the value, inverted where the order descends. A descending index itself has decimals
/// in another order, and no bytes at all stand anywhere in one: here they come before all others.
void appendOrderPart(base::Bytes& key, const Column& column, const base::Value& value, bool descending) {
    constexpr std::size_t kEmptyGroupBytes = 9;
    const std::size_t start = key.size();
    appendKeyPart(key, column, value, true);
    const auto* bytes = std::get_if<base::Bytes>(&value);
    if (bytes != nullptr && bytes->empty()) key.resize(key.size() + kEmptyGroupBytes);
    for (std::size_t i = start; descending && i < key.size(); ++i)
        key[i] = static_cast<std::uint8_t>(~key[i]);
}

/// Finds rows by their pointers. They lie in the order of these, so each page's rows stand together, and within a page
/// the slot alone tells them apart.
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
        // Where no slot before it is free, the row stands where its slot says; else before that.
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
    std::vector<std::uint32_t> firstOfPage_;  ///< of each page from firstPage_ on; the last is the count
    std::vector<std::uint8_t> slots_;         ///< of each row
};

}  // namespace

std::vector<std::uint32_t> orderByKeys(const ResultSet& rows, const std::vector<OrderColumn>& columns,
                                       std::optional<std::uint32_t> top) {
    base::Bytes arena;
    std::vector<KeyedRow> keys(rows.rowCount());
    for (std::uint32_t row = 0; row < keys.size(); ++row) {
        const std::size_t offset = arena.size();
        const ResultRow fields = rows.row(row);
        for (const OrderColumn& column : columns)
            appendOrderPart(arena, rows.column(column.column), fields.value(column.column), column.descending);
        const auto key = std::span(arena).subspan(offset);
        keys[row] = {beginningOf(key), offset, key.size(), row};
    }
    if (top) keepTop(arena, keys, *top);
    std::sort(keys.begin(), keys.end(),
              [&arena](const KeyedRow& a, const KeyedRow& b) { return isBefore(arena, a, b); });
    std::vector<std::uint32_t> order;
    order.reserve(keys.size());
    for (const KeyedRow& key : keys)
        order.push_back(key.row);
    return order;
}

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
