#pragma once

#include <span>
#include <vector>

#include "jet/space/RowPages.h"
#include "jet/table/TableDefinition.h"

namespace jet {

/// The rows of a table as bytes. A row keeps its place, by which indexes know it, for its whole life: one that grows
/// out of its page leaves a pointer there, and its bytes go elsewhere as a hidden row.
class RowStore {
public:
    /// Longest row that is written anew. The format has room for a few bytes more, other programs have not.
    static constexpr std::size_t kMaxBytes = 4060;

    RowStore(PageStore& store, PageAllocator& allocator, const TableDefinition& table);

    /// Whether there is a row at this place that is neither deleted nor another one's hidden bytes.
    bool contains(RowPointer row);

    /// @param bytes  of a whole row, 4 to kMaxBytes of them
    RowPointer add(std::span<const std::uint8_t> bytes) { return pages_.add(bytes); }

    /// Gives the row other bytes, where there is room for them: in its place, where they were moved to, or on another
    /// page.
    void replace(RowPointer row, std::span<const std::uint8_t> bytes);

    /// Wherever its bytes are.
    void remove(RowPointer row);

private:
    std::vector<RowPointer> placesOf(RowPointer row);
    void removeBehind(const std::vector<RowPointer>& places);

    PageStore& store_;
    RowPages pages_;
};

}  // namespace jet
