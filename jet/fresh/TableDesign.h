#pragma once

#include <cstdint>
#include <vector>

#include "base/Text.h"
#include "jet/table/TableDefinition.h"
#include "jet/value/Column.h"

/// A table as somebody wants it made: no places yet. makeDefinition gives each column its number and place.
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
    std::uint8_t scale = 0;         ///< Numeric: of them behind the point
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

/// The definition without any pages. Columns stand in order of their numbers, those of system tables in order of
/// their names; logical indexes in order of their names.
TableDefinition makeDefinition(const TableDesign& design);

}  // namespace jet
