#include "tools/kontodb/TableSchema.h"

#include <algorithm>
#include <compare>
#include <iterator>

#include "jet/Errors.h"
#include "jet/sql/SelectExecutor.h"
#include "jet/table/Table.h"
#include "jet/value/SortKey.h"

namespace kontodb {
namespace {

std::string sizedType(const char* name, std::size_t size) {
    return std::string(name) + "(" + std::to_string(size) + ")";
}

std::string typeOf(const jet::Column& column) {
    using enum jet::ColumnType;
    switch (column.type) {
        case Boolean:
            return "BIT";
        case Byte:
            return "BYTE";
        case Integer:
            return "SHORT";
        case Long:
            return column.isAutoNumber() ? "COUNTER" : "LONG";
        case Currency:
            return "CURRENCY";
        case Single:
            return "SINGLE";
        case Double:
            return "DOUBLE";
        case DateTime:
            return "DATETIME";
        case Binary:
            return sizedType(column.isFixed() ? "BINARY" : "VARBINARY", column.lengthBytes);
        case Text:
            return sizedType(column.isFixed() ? "CHAR" : "TEXT", column.lengthBytes / 2U);
        case Ole:
            return "LONGBINARY";
        case Memo:
            return "MEMO";
        case Guid:
            return "GUID";
        case Numeric:
            return "DECIMAL(" + std::to_string(column.precision) + ", " + std::to_string(column.scale) + ")";
        case Block:
            return sizedType("BINARY", column.lengthBytes);
    }
    return "?";
}

/// @param column  empty for the table
std::optional<base::Text> textOf(const jet::PropertyBlob& properties, base::TextView column, base::TextView name) {
    const jet::Property* const property = properties.find(column, name);
    if (property == nullptr || property->data.empty()) return std::nullopt;
    return property->asText();
}

ColumnSchema columnSchema(const jet::Column& column, const jet::PropertyBlob& properties) {
    ColumnSchema schema{column.name,
                        typeOf(column),
                        properties.isRequired(column.name),
                        textOf(properties, column.name, u"DefaultValue"),
                        textOf(properties, column.name, u"ValidationRule"),
                        textOf(properties, column.name, u"ValidationText")};
    if ((column.flags & jet::Column::kAutoGuid) != 0) schema.defaultValue = u"GenGUID()";
    return schema;
}

std::vector<IndexSchema> indexSchemas(const jet::TableDefinition& definition) {
    std::vector<IndexSchema> schemas;
    for (const jet::LogicalIndex& index : definition.logicalIndexes) {
        if (index.kind == jet::LogicalIndex::Kind::ForeignKey) continue;
        const jet::IndexDefinition& block = definition.indexes.at(index.dataBlock);
        IndexSchema& schema = schemas.emplace_back();
        schema.name = index.name;
        for (const jet::IndexColumn& part : block.columns)
            schema.parts.push_back({definition.columnOf(part).name, part.ascending});
        schema.isPrimary = index.kind == jet::LogicalIndex::Kind::PrimaryKey;
        schema.isUnique = block.isUnique();
        schema.isRequired = block.isRequired();
        schema.ignoresNulls = block.ignoresNulls();
    }
    return schemas;
}

/// A row of MSysRelationships, asked by column name; empty or 0 where the value is null.
template <typename T>
T fieldOf(const jet::sql::ResultSet& rows, std::size_t row, base::TextView name) {
    for (std::size_t column = 0; column < rows.columnCount(); ++column) {
        if (!base::equalsIgnoringAsciiCase(rows.column(column).name, name)) continue;
        const base::Value value = rows.value(row, column);
        if (const T* const found = std::get_if<T>(&value)) return *found;
    }
    return {};
}

std::vector<jet::Relationship> readRelationships(jet::PageSource& source) {
    const auto rows =
        jet::sql::executeSelect(source, u"SELECT * FROM MSysRelationships ORDER BY szRelationship, icolumn");
    std::vector<jet::Relationship> relationships;
    for (std::size_t row = 0; row < rows.rowCount(); ++row) {
        auto name = fieldOf<base::Text>(rows, row, u"szRelationship");
        if (relationships.empty() || relationships.back().name != name) {
            jet::Relationship& fresh = relationships.emplace_back();
            fresh.name = std::move(name);
            fresh.flags = static_cast<std::uint32_t>(fieldOf<std::int32_t>(rows, row, u"grbit"));
            fresh.table = fieldOf<base::Text>(rows, row, u"szObject");
            fresh.referencedTable = fieldOf<base::Text>(rows, row, u"szReferencedObject");
        }
        relationships.back().columns.push_back(fieldOf<base::Text>(rows, row, u"szColumn"));
        relationships.back().referencedColumns.push_back(fieldOf<base::Text>(rows, row, u"szReferencedColumn"));
    }
    return relationships;
}

TableSchema tableSchema(jet::PageSource& source, const jet::CatalogEntry& entry,
                        const std::vector<jet::Relationship>& relationships) {
    const jet::Table table(source, entry);
    const jet::PropertyBlob properties = table.properties();
    TableSchema schema;
    schema.name = table.name();
    schema.rule = textOf(properties, {}, u"ValidationRule");
    schema.ruleText = textOf(properties, {}, u"ValidationText");
    for (const jet::Column* const column : table.definition().columnsForDisplay())
        schema.columns.push_back(columnSchema(*column, properties));
    schema.indexes = indexSchemas(table.definition());
    std::ranges::copy_if(relationships, std::back_inserter(schema.relationships),
                         [&](const jet::Relationship& each) { return jet::textsAreEqual(each.table, schema.name); });
    return schema;
}

}  // namespace

std::vector<jet::CatalogEntry> userTables(jet::PageSource& source) {
    const jet::Catalog catalog(source);
    std::vector<jet::CatalogEntry> tables;
    for (const jet::CatalogEntry& entry : catalog.entries()) {
        if (entry.isLocalTable() && !entry.isSystem()) tables.push_back(entry);
    }
    std::ranges::sort(tables,
                      [](const auto& a, const auto& b) { return std::is_lt(jet::compareTexts(a.name, b.name)); });
    return tables;
}

std::vector<TableSchema> readSchema(jet::PageSource& source, const base::Text* table) {
    std::vector<jet::CatalogEntry> entries;
    if (table == nullptr) {
        entries = userTables(source);
    } else {
        const jet::Catalog catalog(source);
        const jet::CatalogEntry* const entry = catalog.table(*table);
        if (entry == nullptr) throw jet::tableNotFound(*table);
        entries.push_back(*entry);
    }
    const auto relationships = readRelationships(source);
    std::vector<TableSchema> schemas;
    schemas.reserve(entries.size());
    for (const jet::CatalogEntry& entry : entries)
        schemas.push_back(tableSchema(source, entry, relationships));
    return schemas;
}

}  // namespace kontodb
