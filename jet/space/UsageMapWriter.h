#pragma once

#include <optional>

#include "jet/page/PageStore.h"
#include "jet/space/PageAllocator.h"
#include "jet/space/UsageMapRow.h"

namespace jet {

/// The map of a table, index or column being changed: which pages it owns, or which of them have room.
///
/// When a page has no bit, the row is moved to begin with another page, made longer, or turned into references, in
/// this order: whatever comes first that does. A map that is none (there are columns without a map of pages with room)
/// stays empty.
class UsageMapWriter {
public:
    /// @param store, allocator  must outlive the writer
    /// @throws RuntimeError (damage) if there is no sound map
    UsageMapWriter(PageStore& store, PageAllocator& allocator, RowPointer row);

    bool contains(PageNumber page) const { return map_ && map_->contains(page); }
    std::optional<PageNumber> next(PageNumber from) const { return map_ ? map_->next(from) : std::nullopt; }

    void set(PageNumber page);
    void clear(PageNumber page);

private:
    bool widen(PageNumber page);
    void turnIntoReferences(PageNumber page);
    void addBitmap(std::size_t entry);

    PageStore& store_;
    PageAllocator& allocator_;
    std::optional<UsageMapRow> map_;
};

}  // namespace jet
