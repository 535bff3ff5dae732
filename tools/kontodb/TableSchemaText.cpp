#include <algorithm>
#include <functional>

#include "tools/kontodb/AlignedColumns.h"
#include "tools/kontodb/TableSchema.h"
#include "tools/kontodb/ValueText.h"

namespace kontodb {
namespace {

using base::toUtf8;

bool has(const jet::Relationship& relationship, std::uint32_t flag) {
    return (relationship.flags & flag) != 0;
}

/// Each item as text, with commas between.
template <typename Items, typename AsText>
std::string joined(const Items& items, AsText asText) {
    std::string text;
    for (const auto& item : items) {
        if (!text.empty()) text += ", ";
        text += std::invoke(asText, item);
    }
    return text;
}

/// A name as statements write it.
std::string bracketed(const base::Text& name) {
    return "[" + withoutControls(toUtf8(name)) + "]";
}

std::string partAsSql(const IndexSchema::Part& part) {
    return bracketed(part.column) + (part.ascending ? "" : " DESC");
}

std::string oneLine(const base::Text& text) {
    return withoutControls(toUtf8(text));
}

std::string jsonText(base::TextView text) {
    std::string quoted;
    appendJsonText(quoted, text);
    return quoted;
}

std::string json(const std::optional<base::Text>& text) {
    return text ? jsonText(*text) : "null";
}

std::string json(bool flag) {
    return flag ? "true" : "false";
}

std::string json(const ColumnSchema& column) {
    return R"({"name": )" + jsonText(column.name) + R"(, "type": ")" + column.type + R"(", "required": )" +
           json(column.isRequired) + R"(, "default": )" + json(column.defaultValue) + R"(, "rule": )" +
           json(column.rule) + R"(, "ruleText": )" + json(column.ruleText) + "}";
}

std::string json(const IndexSchema& index) {
    const auto part = [](const IndexSchema::Part& each) {
        return R"({"name": )" + jsonText(each.column) + R"(, "ascending": )" + json(each.ascending) + "}";
    };
    return R"({"name": )" + jsonText(index.name) + R"(, "primary": )" + json(index.isPrimary) + R"(, "unique": )" +
           json(index.isUnique) + R"(, "required": )" + json(index.isRequired) + R"(, "ignoreNulls": )" +
           json(index.ignoresNulls) + R"(, "columns": [)" + joined(index.parts, part) + "]}";
}

std::string json(const jet::Relationship& relationship) {
    const auto name = [](const base::Text& each) { return jsonText(each); };
    return R"({"name": )" + name(relationship.name) + R"(, "columns": [)" + joined(relationship.columns, name) +
           R"(], "referencedTable": )" + name(relationship.referencedTable) + R"(, "referencedColumns": [)" +
           joined(relationship.referencedColumns, name) + R"(], "enforced": )" +
           json(!has(relationship, jet::Relationship::kNotEnforced)) + R"(, "cascadeUpdates": )" +
           json(has(relationship, jet::Relationship::kCascadeUpdates)) + R"(, "cascadeDeletes": )" +
           json(has(relationship, jet::Relationship::kCascadeDeletes)) + "}";
}

/// What a rule says, and what is said to who breaks it.
std::string ruleForPeople(const std::optional<base::Text>& rule, const std::optional<base::Text>& text) {
    return "Regel " + oneLine(*rule) + (text ? " (" + oneLine(*text) + ")" : "");
}

std::string columnForPeople(const ColumnSchema& column) {
    std::vector<std::string> notes;
    if (column.isRequired) notes.emplace_back("erforderlich");
    if (column.defaultValue) notes.push_back("Vorgabe " + oneLine(*column.defaultValue));
    if (column.rule) notes.push_back(ruleForPeople(column.rule, column.ruleText));
    return joined(notes, [](const std::string& note) { return note; });
}

std::string indexForPeople(const IndexSchema& index) {
    std::string text = index.isPrimary ? "  Primärschlüssel " : index.isUnique ? "  Eindeutiger Index " : "  Index ";
    text += oneLine(index.name) + ": " + joined(index.parts, [](const IndexSchema::Part& part) {
                return oneLine(part.column) + (part.ascending ? "" : " absteigend");
            });
    if (index.isRequired && !index.isPrimary) text += "; Null nicht erlaubt";
    if (index.ignoresNulls) text += "; ohne Null";
    return text + "\n";
}

std::string relationshipForPeople(const jet::Relationship& relationship) {
    std::string text = "  Beziehung " + oneLine(relationship.name) + ": " + joined(relationship.columns, oneLine) +
                       " -> " + oneLine(relationship.referencedTable) + " (" +
                       joined(relationship.referencedColumns, oneLine) + ")";
    if (has(relationship, jet::Relationship::kNotEnforced)) text += "; nicht erzwungen";
    if (has(relationship, jet::Relationship::kCascadeUpdates)) text += "; Änderungen werden weitergegeben";
    if (has(relationship, jet::Relationship::kCascadeDeletes)) text += "; Löschen wird weitergegeben";
    return text + "\n";
}

std::string columnAsSql(const ColumnSchema& column) {
    return "\n  " + bracketed(column.name) + " " + column.type + (column.isRequired ? " NOT NULL" : "") +
           (column.defaultValue ? " DEFAULT " + oneLine(*column.defaultValue) : "");
}

std::string ruleAsSql(const std::string& place, const std::optional<base::Text>& rule,
                      const std::optional<base::Text>& text) {
    return rule ? "-- " + place + ": " + ruleForPeople(rule, text) + "\n" : "";
}

std::string indexAsSql(const TableSchema& table, const IndexSchema& index) {
    const std::string columns = " (" + joined(index.parts, partAsSql) + ")";
    std::string text = index.isUnique || index.isPrimary ? "CREATE UNIQUE INDEX " : "CREATE INDEX ";
    text += bracketed(index.name) + " ON " + bracketed(table.name) + columns;
    if (index.isPrimary)
        text += " WITH PRIMARY";
    else if (index.isRequired)
        text += " WITH DISALLOW NULL";
    else if (index.ignoresNulls)
        text += " WITH IGNORE NULL";
    return text + ";\n";
}

}  // namespace

std::string schemaForPeople(const TableSchema& table) {
    std::size_t widest = 0;
    for (const ColumnSchema& column : table.columns)
        widest = std::max(widest, column.name.size());
    std::string text = "Tabelle " + oneLine(table.name) + "\n";
    for (const ColumnSchema& column : table.columns) {
        text += "  " + oneLine(column.name) + std::string(widest - column.name.size() + 2, ' ') + column.type;
        const std::string notes = columnForPeople(column);
        if (!notes.empty()) text += std::string(column.type.size() < 15 ? 15 - column.type.size() : 1, ' ') + notes;
        text += "\n";
    }
    if (table.rule) text += "  " + ruleForPeople(table.rule, table.ruleText) + "\n";
    for (const IndexSchema& index : table.indexes)
        text += indexForPeople(index);
    for (const jet::Relationship& relationship : table.relationships)
        text += relationshipForPeople(relationship);
    return text;
}

std::string schemaAsJson(const TableSchema& table) {
    const auto each = [](const auto& item) { return json(item); };
    return R"({"table": )" + jsonText(table.name) + R"(, "rule": )" + json(table.rule) + R"(, "ruleText": )" +
           json(table.ruleText) + R"(, "columns": [)" + joined(table.columns, each) + R"(], "indexes": [)" +
           joined(table.indexes, each) + R"(], "relationships": [)" + joined(table.relationships, each) + "]}\n";
}

std::string schemaAsSql(const TableSchema& table) {
    std::string columns;
    for (const ColumnSchema& column : table.columns)
        columns += (columns.empty() ? "" : ",") + columnAsSql(column);
    std::string text = "CREATE TABLE " + bracketed(table.name) + " (" + columns + "\n);\n";
    for (const IndexSchema& index : table.indexes)
        text += indexAsSql(table, index);
    text += ruleAsSql(bracketed(table.name), table.rule, table.ruleText);
    for (const ColumnSchema& column : table.columns)
        text += ruleAsSql(bracketed(column.name), column.rule, column.ruleText);
    return text;
}

std::string relationshipsAsSql(const TableSchema& table) {
    std::string text;
    for (const jet::Relationship& relationship : table.relationships) {
        if (has(relationship, jet::Relationship::kNotEnforced)) continue;
        text += "ALTER TABLE " + bracketed(table.name) + " ADD CONSTRAINT " + bracketed(relationship.name) +
                " FOREIGN KEY (" + joined(relationship.columns, bracketed) + ") REFERENCES " +
                bracketed(relationship.referencedTable) + " (" + joined(relationship.referencedColumns, bracketed) +
                ")";
        if (has(relationship, jet::Relationship::kCascadeUpdates)) text += " ON UPDATE CASCADE";
        if (has(relationship, jet::Relationship::kCascadeDeletes)) text += " ON DELETE CASCADE";
        text += ";\n";
    }
    return text;
}

}  // namespace kontodb
