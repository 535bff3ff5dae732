#include "jet/change/TableSet.h"

#include "jet/Errors.h"

namespace jet {

TableStore& TableSet::named(base::TextView name) {
    const CatalogEntry* entry = catalog_.table(name);
    if (entry == nullptr) throw tableNotFound(name);
    return open(*entry);
}

TableStore& TableSet::at(PageNumber definition) {
    for (const CatalogEntry& entry : catalog_.entries()) {
        if (entry.isLocalTable() && entry.id == definition) return open(entry);
    }
    throw damaged(definition, u"Eine Beziehung nennt eine Tabelle, die es nicht gibt");
}

TableStore& TableSet::open(const CatalogEntry& entry) {
    std::unique_ptr<TableStore>& table = tables_[entry.id];
    if (!table) table = std::make_unique<TableStore>(store_, allocator_, entry);
    return *table;
}

}  // namespace jet
