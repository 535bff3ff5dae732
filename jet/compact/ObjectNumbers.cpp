#include "jet/compact/ObjectNumbers.h"

namespace jet {
namespace {

constexpr std::size_t kObjects = 0;
constexpr std::size_t kAccessRights = 1;

/// @return null if the table's rows name no objects by their numbers
const Column* numberColumn(const TableDefinition& definition, const Header& header) {
    if (definition.page == header.systemTables[kObjects]) return definition.column(u"Id");
    if (definition.page == header.systemTables[kAccessRights]) return definition.column(u"ObjectId");
    return nullptr;
}

}  // namespace

std::uint32_t ObjectNumbers::of(std::uint32_t original) const {
    const auto found = copies_.find(original);
    return found == copies_.end() ? original : found->second;
}

void ObjectNumbers::renumber(const TableDefinition& definition, const Header& original,
                             std::vector<base::Value>& row) const {
    const Column* column = numberColumn(definition, original);
    if (column == nullptr) return;
    if (auto* number = std::get_if<std::int32_t>(&row[column->number]))
        *number = static_cast<std::int32_t>(of(static_cast<std::uint32_t>(*number)));
}

void ObjectNumbers::renumber(std::vector<LogicalIndex>& indexes) const {
    for (LogicalIndex& index : indexes) {
        if (index.kind == LogicalIndex::Kind::ForeignKey) index.partnerTable = of(index.partnerTable);
    }
}

std::vector<CatalogEntry> localTables(const Catalog& catalog) {
    std::vector<CatalogEntry> tables;
    for (const CatalogEntry& entry : catalog.entries()) {
        if (entry.isLocalTable()) tables.push_back(entry);
    }
    return tables;
}

}  // namespace jet
