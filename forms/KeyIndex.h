#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

namespace forms {

/// Finds rows by the hashes of their keys; what the keys are, its user knows. Rows lie in one table, each at the first
/// free slot from the one that its hash names, so that a million of them are put in and found with few reads of
/// far memory.
class KeyIndex {
public:
    using Row = std::uint32_t;

    /// @param hasKey  whether a row with this hash, bool(Row), has the very key
    template <typename HasKey>
    std::optional<Row> find(std::uint32_t hash, HasKey hasKey) const {
        if (slots_.empty()) return std::nullopt;
        for (std::size_t place = homeOf(hash); slots_[place].row != kFree; place = after(place))
            if (slots_[place].hash == hash && hasKey(slots_[place].row)) return slots_[place].row;
        return std::nullopt;
    }

    /// @param row  not in the index, and not the greatest number
    void insert(std::uint32_t hash, Row row);
    /// @param row  in the index with this hash
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

    std::vector<Slot> slots_;  ///< a power of two of them, or none
    std::size_t count_ = 0;
};

}  // namespace forms
