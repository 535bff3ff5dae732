#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/Text.h"
#include "jet/check/RelationshipCheck.h"
#include "jet/page/PageSource.h"
#include "jet/table/Catalog.h"

/// How the tables of a file are built, as their owner knows it.
namespace kontodb {

struct ColumnSchema {
    base::Text name;
    std::string type;  ///< as CREATE TABLE writes it: "TEXT(100)"
    bool isRequired = false;
    std::optional<base::Text> defaultValue;  ///< an expression
    std::optional<base::Text> rule;
    std::optional<base::Text> ruleText;  ///< shown if a value breaks the rule
};

struct IndexSchema {
    struct Part {
        base::Text column;
        bool ascending = true;
    };
    base::Text name;
    std::vector<Part> parts;
    bool isPrimary = false;
    bool isUnique = false;
    bool isRequired = false;
    bool ignoresNulls = false;
};

struct TableSchema {
    base::Text name;
    std::optional<base::Text> rule;
    std::optional<base::Text> ruleText;
    std::vector<ColumnSchema> columns;  ///< in the order of SELECT *
    std::vector<IndexSchema> indexes;
    std::vector<jet::Relationship> relationships;  ///< in which this table refers to others
};

/// The tables that are not the system's, by name.
std::vector<jet::CatalogEntry> userTables(jet::PageSource& source);

/// @param table  null for all that are not the system's
/// @throws base::RuntimeError: there is no such table, damage
std::vector<TableSchema> readSchema(jet::PageSource& source, const base::Text* table);

std::string schemaForPeople(const TableSchema& table);
std::string schemaAsJson(const TableSchema& table);
/// Statements that make the table; those that make its relationships.
std::string schemaAsSql(const TableSchema& table);
std::string relationshipsAsSql(const TableSchema& table);

}  // namespace kontodb
