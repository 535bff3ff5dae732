#pragma once

#include <span>
#include <vector>

#include "jet/space/RowPages.h"
#include "jet/table/TableDefinition.h"

namespace jet {

/// The rows of a table as bytes. A row never changes its place, because indexes refer to it. If it becomes too long for
/// its page, a pointer replaces it there, and its bytes move to another page as a hidden row.
class RowStore {
public:
    /// The longest row that is written. The format allows a few bytes more, but other programs do not.
    static constexpr std::size_t kMaxBytes = 4060;

    RowStore(PageStore& store, PageAllocator& allocator, const TableDefinition& table);

    /// Whether there is a row at this place. Deleted rows and the hidden bytes of other rows do not count.
    bool contains(RowPointer row);

    /// @param bytes  of a whole row; 4 to kMaxBytes
    RowPointer add(std::span<const std::uint8_t> bytes) { return pages_.add(bytes); }

    /// Replaces the bytes of the row. They are stored at its place, or where it was moved to, or on another page,
    /// depending on the room.
    void replace(RowPointer row, std::span<const std::uint8_t> bytes);

    /// Also if its bytes were moved.
    void remove(RowPointer row);

private:
    std::vector<RowPointer> placesOf(RowPointer row);
    void removeBehind(const std::vector<RowPointer>& places);

    PageStore& store_;
    RowPages pages_;
};

}  // namespace jet
