#include "jet/fresh/ObjectNumbers.h"

#include "jet/Errors.h"

namespace jet {
namespace {

struct NumberColumn {
    base::TextView table;
    base::TextView column;
};

/// The last three tables belong to Access, which keeps its list of objects there.
constexpr NumberColumn kNumberColumns[] = {
    {u"MSysObjects", u"Id"},          {u"MSysObjects", u"ParentId"},       {u"MSysACEs", u"ObjectId"},
    {u"MSysNavPaneObjectIDs", u"Id"}, {u"MSysNavPaneGroups", u"ObjectID"}, {u"MSysNavPaneGroupToObjects", u"ObjectID"}};

}  // namespace

std::uint32_t ObjectNumbers::of(std::uint32_t original) const {
    const auto found = copies_.find(original);
    return found == copies_.end() ? original : found->second;
}

std::vector<const Column*> ObjectNumbers::columnsIn(const CatalogEntry& table, const TableDefinition& definition) {
    std::vector<const Column*> columns;
    if (!table.isSystem()) return columns;
    for (const NumberColumn& each : kNumberColumns) {
        if (table.name != each.table) continue;
        const Column* column = definition.column(each.column);
        if (column != nullptr && column->type == ColumnType::Long) columns.push_back(column);
    }
    return columns;
}

void ObjectNumbers::renumber(const std::vector<const Column*>& columns, std::vector<base::Value>& row) const {
    for (const Column* column : columns) {
        if (auto* number = std::get_if<std::int32_t>(&row[column->number]))
            *number = static_cast<std::int32_t>(of(static_cast<std::uint32_t>(*number)));
    }
}

void ObjectNumbers::renumber(std::vector<LogicalIndex>& indexes) const {
    for (LogicalIndex& index : indexes) {
        if (index.kind == LogicalIndex::Kind::ForeignKey) index.partnerTable = of(index.partnerTable);
    }
}

std::vector<Table> localTables(PageSource& source) {
    std::vector<Table> tables;
    const Catalog catalog(source);
    for (const CatalogEntry& entry : catalog.entries()) {
        if (!entry.isLocalTable()) continue;
        try {
            tables.emplace_back(source, entry);
        } catch (const base::RuntimeError& error) {
            throw base::RuntimeError(error.number(), u"Die Tabelle '" + entry.name + u"' ist nicht lesbar. " +
                                                         base::Text(error.description()));
        }
    }
    return tables;
}

}  // namespace jet
