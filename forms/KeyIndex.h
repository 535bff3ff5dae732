#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

namespace forms {

/// Finds rows by the hashes of their keys; the caller compares the keys themselves. Rows are kept in one table, each in
/// the first free slot, starting at the slot that its hash names. So a million rows can be inserted and found with few
/// cache misses.
class KeyIndex {
public:
    using Row = std::uint32_t;

    /// @param hasKey  called as bool(Row) for a row with this hash: whether it really has the key
    template <typename HasKey>
    std::optional<Row> find(std::uint32_t hash, HasKey hasKey) const {
        if (slots_.empty()) return std::nullopt;
        for (std::size_t place = homeOf(hash); slots_[place].row != kFree; place = after(place))
            if (slots_[place].hash == hash && hasKey(slots_[place].row)) return slots_[place].row;
        return std::nullopt;
    }

    /// @param row  not in the index yet, and not the greatest number
    void insert(std::uint32_t hash, Row row);
    /// @param row  is in the index with this hash
    void erase(std::uint32_t hash, Row row);
    void clear();

private:
    static constexpr Row kFree = std::numeric_limits<Row>::max();

    struct Slot {
        std::uint32_t hash = 0;
        Row row = kFree;
    };

    std::size_t homeOf(std::uint32_t hash) const { return hash & (slots_.size() - 1); }
    std::size_t after(std::size_t place) const { return (place + 1) & (slots_.size() - 1); }
    void put(Slot slot);
    void grow();

    std::vector<Slot> slots_;  ///< empty, or a power of two of them
    std::size_t count_ = 0;
};

}  // namespace forms
