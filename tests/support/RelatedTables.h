#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

#include "base/Value.h"
#include "jet/change/LongValueStore.h"
#include "jet/change/RowDraft.h"
#include "jet/change/RowStore.h"
#include "jet/change/TableStore.h"
#include "jet/check/RelationshipCheck.h"
#include "jet/fresh/SystemTables.h"
#include "jet/page/PageStore.h"
#include "jet/space/PageAllocator.h"
#include "jet/table/Catalog.h"
#include "jet/table/PropertyBlob.h"
#include "jet/table/Table.h"
#include "jet/value/SortKey.h"
#include "jet/value/TextCodec.h"

namespace test {

inline constexpr std::uint8_t kCascade = 1;
inline constexpr std::uint8_t kSetNull = 2;

/// Adds a row to a system table. The engine refuses to do that, so the table is marked as a user's table meanwhile.
inline void addSystemRow(jet::PageStore& store, base::TextView name, const std::vector<base::Value>& values) {
    constexpr std::size_t kKindOffset = 40;
    jet::CatalogEntry entry = *jet::Catalog(store).table(name);
    entry.flags = 0;
    store.change(entry.id)[kKindOffset] = 'N';
    jet::PageAllocator allocator(store);
    jet::TableStore table(store, allocator, entry);
    jet::RowDraft row = table.makeRow();
    for (std::size_t number = 0; number < values.size(); ++number)
        row.put(*table.definition().columnNumbered(static_cast<std::uint16_t>(number)), values[number]);
    table.add(row, table.makeEntries(row));
    store.change(entry.id)[kKindOffset] = 'S';
}

/// Changes the definition of a table in place.
inline void editDefinition(jet::PageStore& store, base::TextView table,
                           const std::function<void(jet::TableDefinition&)>& edit) {
    jet::TableDefinition definition = jet::openTable(store, table)->definition();
    edit(definition);
    const auto pages = jet::definitionPages(definition.encode(), definition.chain);
    for (std::size_t i = 0; i < pages.size(); ++i)
        std::ranges::copy(pages[i], store.change(definition.chain[i]).begin());
}

/// Puts a text property into the catalog, as the designer of a database does.
/// @param column  empty for a property of the table
inline void setProperty(jet::PageStore& store, base::TextView tableName, base::TextView column, base::TextView name,
                        base::TextView value) {
    const jet::Table table = *jet::openTable(store, tableName);
    jet::PropertyBlob properties = table.properties();
    const jet::Property property{base::Text(name), 1, 12, jet::encodeText(value, false)};
    properties.owners.push_back({static_cast<std::uint16_t>(column.empty() ? 0 : 1), base::Text(column), {property}});
    const jet::Table catalog(store, jet::CatalogEntry::ofCatalog());
    jet::PageAllocator allocator(store);
    jet::LongValueStore longValues(store, allocator, catalog.definition());
    jet::RowStore rows(store, allocator, catalog.definition());
    jet::RowDraft draft(store, catalog.definition(), catalog.rowAt(table.entry().row).view);
    draft.put(*catalog.definition().column(u"LvProp"), properties.encode());
    rows.replace(table.entry().row, draft.finish(longValues));
}

/// Makes `table`.`column` refer to `referenced`.`key`. Each of the two columns must have an index of its own. Writes
/// both table definitions, the row of the relationship and its object in the catalog.
/// @param updateRule  0 or kCascade
/// @param deleteRule  0, kCascade or kSetNull
inline void relate(jet::PageStore& store, base::TextView table, base::TextView column, base::TextView referenced,
                   base::TextView key, std::uint8_t updateRule = 0, std::uint8_t deleteRule = 0) {
    using jet::LogicalIndex;
    const base::Text name = base::Text(table) + base::Text(referenced);
    const auto definitionOf = [&](base::TextView of) { return jet::openTable(store, of)->definition(); };
    const auto next = [&](base::TextView of) {
        return static_cast<std::uint32_t>(definitionOf(of).logicalIndexes.size());
    };
    const auto add = [&](base::TextView to, base::TextView indexed, LogicalIndex index) {
        editDefinition(store, to, [&](jet::TableDefinition& definition) {
            const auto number = definition.column(indexed)->number;
            const auto block = std::ranges::find_if(definition.indexes, [&](const jet::IndexDefinition& each) {
                return each.columns.size() == 1 && each.columns[0].columnNumber == number;
            });
            index.kind = LogicalIndex::Kind::ForeignKey;
            index.dataBlock = static_cast<std::uint32_t>(block - definition.indexes.begin());
            index.updateRule = updateRule;
            index.deleteRule = deleteRule;
            definition.logicalIndexes.push_back(index);
            std::ranges::sort(definition.logicalIndexes, {},
                              [](const LogicalIndex& each) { return jet::sortKey(each.name); });
        });
    };
    LogicalIndex referencing, other;
    referencing.name = name;
    referencing.side = LogicalIndex::Side::Referencing;
    referencing.number = other.partnerNumber = next(table);
    referencing.partnerTable = definitionOf(referenced).page;
    other.name = u".r" + name;
    other.side = LogicalIndex::Side::Referenced;
    other.number = referencing.partnerNumber = next(referenced) + (table == referenced ? 1 : 0);
    other.partnerTable = definitionOf(table).page;
    add(table, column, referencing);
    add(referenced, key, other);

    constexpr std::uint32_t kFirstObject = 0x80000001;
    const auto relationships =
        std::ranges::count(jet::Catalog(store).entries(), jet::CatalogEntry::kRelationship, &jet::CatalogEntry::type);
    const std::uint32_t flags = (updateRule == kCascade ? jet::Relationship::kCascadeUpdates : 0) |
                                (deleteRule == kCascade ? jet::Relationship::kCascadeDeletes : 0) |
                                (deleteRule == kSetNull ? jet::Relationship::kSetNullOnDelete : 0);
    addSystemRow(store, u"MSysRelationships",
                 {name, static_cast<std::int32_t>(flags), std::int32_t{1}, std::int32_t{0}, base::Text(table),
                  base::Text(column), base::Text(referenced), base::Text(key)});
    addSystemRow(store, u"MSysObjects",
                 jet::objectRow(static_cast<std::uint32_t>(kFirstObject + relationships),
                                jet::CatalogEntry::kRelationshipsContainer, name, jet::CatalogEntry::kRelationship, 0,
                                jet::BuiltInAccount::Admin, jet::knownCreationStamp()));
}

}  // namespace test
