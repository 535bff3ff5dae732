#pragma once

#include <vector>

#include "jet/page/PageStore.h"
#include "jet/table/TableDefinition.h"

namespace jet {

/// The pages to which the tables of the file refer, whatever the global map says: definitions, usage maps, rows, long
/// values, indexes. Pages without an owner are not in this set.
class PagesInUse {
public:
    /// Goes through all tables once.
    /// @throws RuntimeError (damage)
    explicit PagesInUse(PageStore& store);

    bool contains(PageNumber page) const { return page < isUsed_.size() && isUsed_[page]; }

private:
    void addTable(const TableDefinition& definition);
    void addMap(RowPointer row);
    void addPage(PageNumber page);

    PageStore& store_;
    std::vector<bool> isUsed_;  ///< by page number
};

}  // namespace jet
