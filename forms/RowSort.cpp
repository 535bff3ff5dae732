#include "forms/RowSort.h"

#include <algorithm>
#include <cstring>

namespace forms {
namespace {

constexpr std::size_t kBlockBytes = std::size_t{1} << 20U;
constexpr std::size_t kStartBytes = 8;

}  // namespace

void RowSort::add(Row row, std::span<const std::uint8_t> key) {
    entries_.push_back({0, keep(key), static_cast<std::uint32_t>(key.size()), row});
}

const std::uint8_t* RowSort::keep(std::span<const std::uint8_t> key) {
    if (key.size() > roomBytes_) {
        roomBytes_ = std::max(kBlockBytes, key.size());
        blocks_.push_back(std::make_unique_for_overwrite<std::uint8_t[]>(roomBytes_));
        next_ = blocks_.back().get();
    }
    std::uint8_t* const place = next_;
    next_ = std::copy(key.begin(), key.end(), place);
    roomBytes_ -= key.size();
    return place;
}

std::vector<RowSort::Row> RowSort::inOrder(std::size_t settledCount) {
    fillStarts();
    const auto before = [this](const Entry& a, const Entry& b) { return standsBefore(a, b); };
    const auto added = entries_.begin() + static_cast<std::ptrdiff_t>(settledCount);
    std::stable_sort(added, entries_.end(), before);

    std::vector<Row> rows;
    rows.reserve(entries_.size());
    // Not std::merge: the settled rows need not be sorted.
    auto next = added;
    for (auto settled = entries_.begin(); settled != added; ++settled) {
        while (next != entries_.end() && before(*next, *settled))
            rows.push_back((next++)->row);
        rows.push_back(settled->row);
    }
    for (; next != entries_.end(); ++next)
        rows.push_back(next->row);
    return rows;
}

/// Account names often have the same beginning, and paths nearly always do. So `start` holds the bytes of the key after
/// the part that all keys share.
void RowSort::fillStarts() {
    if (entries_.empty()) return;
    const Entry& first = entries_.front();
    std::size_t common = first.sizeBytes;
    for (const Entry& entry : entries_) {
        const std::size_t most = std::min<std::size_t>(common, entry.sizeBytes);
        common = static_cast<std::size_t>(std::mismatch(first.key, first.key + most, entry.key).first - first.key);
    }
    for (Entry& entry : entries_) {
        entry.start = 0;
        for (std::size_t i = 0; i < kStartBytes; ++i)
            entry.start = entry.start << 8U | (common + i < entry.sizeBytes ? entry.key[common + i] : 0U);
    }
}

bool RowSort::isLess(const Entry& a, const Entry& b) {
    if (a.start != b.start) return a.start < b.start;
    const std::size_t most = std::min(a.sizeBytes, b.sizeBytes);
    const int comparison = most == 0 ? 0 : std::memcmp(a.key, b.key, most);
    return comparison != 0 ? comparison < 0 : a.sizeBytes < b.sizeBytes;
}

}  // namespace forms
