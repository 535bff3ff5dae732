#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace forms {

/// Rows while they are being sorted. Each has a sort key, made once from its text: comparing texts in the order of a
/// language costs many times what comparing the keys' bytes does, and a million rows need twenty million comparisons.
/// Rows with equal keys keep the order in which they were added.
class RowSort {
public:
    using Row = std::uint32_t;

    explicit RowSort(bool descending) : descending_(descending) {}

    void reserve(std::size_t rowCount) { entries_.reserve(rowCount); }
    /// Copies the key. Keys are compared byte by byte; a key comes before any longer key that begins with it.
    void add(Row row, std::span<const std::uint8_t> key);

    /// The rows in order. The first settledCount rows keep their order relative to each other, even if their keys say
    /// otherwise. The others are sorted, and each is put before the first settled row whose key is greater.
    std::vector<Row> inOrder(std::size_t settledCount);

private:
    struct Entry {
        std::uint64_t start;  ///< the key's next bytes after the part that all keys share
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
    // Keys are stored in blocks, so that none has to move when another is added.
    std::vector<std::unique_ptr<std::uint8_t[]>> blocks_;
    std::size_t roomBytes_ = 0;  ///< free bytes in the last block
    std::uint8_t* next_ = nullptr;
};

}  // namespace forms
