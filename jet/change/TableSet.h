#pragma once

#include <map>
#include <memory>

#include "base/Text.h"
#include "jet/change/TableStore.h"
#include "jet/page/PageStore.h"
#include "jet/space/PageAllocator.h"
#include "jet/table/Catalog.h"

namespace jet {

/// The tables that one transaction writes. Each is opened once, and all use the same PageAllocator.
class TableSet {
public:
    /// @param store  must outlive the set
    /// @throws RuntimeError (damage)
    explicit TableSet(PageStore& store) : store_(store), allocator_(store), catalog_(store) {}
    TableSet(const TableSet&) = delete;
    TableSet& operator=(const TableSet&) = delete;
    ~TableSet() = default;

    PageStore& store() { return store_; }
    const Catalog& catalog() const { return catalog_; }

    /// @throws RuntimeError if there is no table of this name, or it cannot be written
    TableStore& named(base::TextView name);

    /// @param definition  page of the definition, which identifies the table
    /// @throws RuntimeError (damage) if the catalog knows no such table
    TableStore& at(PageNumber definition);

private:
    TableStore& open(const CatalogEntry& entry);

    PageStore& store_;
    PageAllocator allocator_;
    Catalog catalog_;
    std::map<PageNumber, std::unique_ptr<TableStore>> tables_;
};

}  // namespace jet
