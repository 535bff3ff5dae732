#pragma once

#include <cstdint>
#include <vector>

#include "base/Text.h"
#include "jet/table/TableDefinition.h"
#include "jet/value/Column.h"

/// The wanted design of a table, without places. makeDefinition gives each column its number and its place.
namespace jet {

struct ColumnDesign {
    base::Text name;
    ColumnType type = ColumnType::Long;
    std::uint16_t maxUnits = 0;  ///< Text: longest value in UTF-16 units; Binary: in bytes
    bool isAutoNumber = false;
    bool isRequired = false;
    bool allowsZeroLength = true;   ///< Text
    bool compresses = true;         ///< Text
    std::uint8_t furtherFlags = 0;  ///< of the descriptor
    std::uint8_t precision = 18;    ///< Numeric: digits, at most 28
    std::uint8_t scale = 0;         ///< Numeric: digits after the point
};

struct IndexColumnDesign {
    base::Text name;
    bool ascending = true;
};

struct IndexDesign {
    base::Text name;
    std::vector<IndexColumnDesign> columns;
    bool isPrimary = false;
    std::uint8_t flags = 0;  ///< IndexDefinition's kUnique, kIgnoreNulls, kRequired
};

struct TableDesign {
    base::Text name;
    std::vector<ColumnDesign> columns;
    std::vector<IndexDesign> indexes;
    bool isSystem = false;
};

/// Makes the definition without any pages. Columns are in the order of their numbers, those of system tables in the
/// order of their names. Logical indexes are in the order of their names.
TableDefinition makeDefinition(const TableDesign& design);

}  // namespace jet
