#pragma once

#include <optional>

#include "jet/page/PageStore.h"
#include "jet/space/PageAllocator.h"
#include "jet/space/UsageMapRow.h"

namespace jet {

/// Changes the map of a table, index or column: the pages that it owns, or those of them with space.
///
/// If a page has no bit, the row gets another first page, or becomes longer, or is turned into references. The first of
/// these that works is done. Some columns have no map of pages with space: such a map stays empty.
class UsageMapWriter {
public:
    /// @param store, allocator  must outlive the writer
    /// @throws RuntimeError (damage) if the map is not sound
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
