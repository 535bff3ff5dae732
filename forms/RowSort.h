#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace forms {

/// Rows while they are put in order. Each comes with the sort key of its text, made once a row: a comparison in
/// the order of a language costs many times what comparing the keys' bytes does, and a million rows need
/// twenty million comparisons. Rows with equal keys keep the order in which they came.
class RowSort {
public:
    using Row = std::uint32_t;

    explicit RowSort(bool descending) : descending_(descending) {}

    void reserve(std::size_t rowCount) { entries_.reserve(rowCount); }
    /// Copies the key. Keys stand as their bytes do, a shorter one before those that it begins.
    void add(Row row, std::span<const std::uint8_t> key);

    /// The rows in order. The first settledCount rows keep their order among themselves, also where their
    /// keys say otherwise; the others are sorted and each is put before the first of those that it precedes.
    std::vector<Row> inOrder(std::size_t settledCount);

private:
    struct Entry {
        std::uint64_t start;  ///< the key's bytes behind what all keys have in common, as far as they fit
        const std::uint8_t* key;
        std::uint32_t sizeBytes;
        Row row;
    };

    const std::uint8_t* keep(std::span<const std::uint8_t> key);
    void fillStarts();
    bool standsBefore(const Entry& a, const Entry& b) const { return descending_ ? isLess(b, a) : isLess(a, b); }
    static bool isLess(const Entry& a, const Entry& b);

    bool descending_;
    std::vector<Entry> entries_;
    // Keys lie in blocks, one behind the other: no key is moved when the next one comes.
    std::vector<std::unique_ptr<std::uint8_t[]>> blocks_;
    std::size_t roomBytes_ = 0;  ///< left in the last block
    std::uint8_t* next_ = nullptr;
};

}  // namespace forms
