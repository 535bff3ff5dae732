#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace forms {

/// Finds rows by the hashes of their keys; the caller compares the keys themselves. Rows are kept in one table, each in
/// the first free slot, starting at the slot that its hash names. A second array has one byte of the hash for each
/// slot. Even for a million rows it stays in the processor's cache, and it nearly always shows that a key is new.
class KeyIndex {
public:
    using Row = std::uint32_t;

    /// @param hasKey  called as bool(Row) for a row with this hash: whether it really has the key
    template <typename HasKey>
    std::optional<Row> find(std::uint32_t hash, HasKey hasKey) const {
        if (marks_.empty()) return std::nullopt;
        for (std::size_t place = homeOf(hash); marks_[place] != kFree; place = after(place)) {
            if (marks_[place] != markOf(hash)) continue;
            const Slot& slot = slots_[place];
            if (slot.hash == hash && hasKey(slot.row)) return slot.row;
        }
        return std::nullopt;
    }

    /// @param row  not in the index yet
    void insert(std::uint32_t hash, Row row);
    /// @param row  is in the index with this hash
    void erase(std::uint32_t hash, Row row);
    void clear();

private:
    using Mark = std::uint8_t;
    static constexpr Mark kFree = 0;

    struct Slot {
        std::uint32_t hash = 0;
        Row row = 0;
    };

    /// Taken from the highest bits, because the lowest choose the slot; never kFree.
    static Mark markOf(std::uint32_t hash) { return static_cast<Mark>(hash >> 25U | 0x80U); }
    std::size_t homeOf(std::uint32_t hash) const { return hash & (marks_.size() - 1); }
    std::size_t after(std::size_t place) const { return (place + 1) & (marks_.size() - 1); }
    void put(Slot slot);
    void grow();

    std::vector<Mark> marks_;  ///< one for each slot
    std::vector<Slot> slots_;  ///< none, or a power of two of them
    std::size_t count_ = 0;
};

}  // namespace forms
