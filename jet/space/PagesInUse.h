#pragma once

#include <vector>

#include "jet/page/PageStore.h"
#include "jet/table/TableDefinition.h"

namespace jet {

/// The pages that the file's tables refer to, whatever its global map says of them: definitions, usage maps, rows, long
/// values, indexes. Pages that belong to nobody are not in it.
class PagesInUse {
public:
    /// Looks at all tables, once.
    /// @throws RuntimeError (damage)
    explicit PagesInUse(PageStore& store);

    bool contains(PageNumber page) const { return page < isUsed_.size() && isUsed_[page]; }

private:
    void addTable(const TableDefinition& definition);
    void addMap(RowPointer row);
    void addPage(PageNumber page);

    PageStore& store_;
    std::vector<bool> isUsed_;  ///< by page
};

}  // namespace jet
