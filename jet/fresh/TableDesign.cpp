#include "jet/fresh/TableDesign.h"

#include <algorithm>
#include <cassert>

namespace jet {
namespace {

bool isVariable(ColumnType type) {
    return type == ColumnType::Text || type == ColumnType::Binary || type == ColumnType::Memo ||
           type == ColumnType::Ole;
}

std::uint16_t lengthOf(const ColumnDesign& design) {
    switch (design.type) {
        case ColumnType::Boolean:
            return 1;  // although it takes no space in the row
        case ColumnType::Text:
            return static_cast<std::uint16_t>(2 * design.maxUnits);
        case ColumnType::Binary:
            return design.maxUnits;
        default:
            return static_cast<std::uint16_t>(storedBytes(design.type));
    }
}

bool nameIsLess(base::TextView a, base::TextView b) {
    return compareTexts(a, b) == std::strong_ordering::less;
}

void addColumn(TableDefinition& definition, const ColumnDesign& design, bool isSystem) {
    Column column;
    column.name = design.name;
    column.type = design.type;
    column.number = definition.columnsEver++;
    column.displayPosition = isSystem ? std::uint16_t{0} : column.number;
    column.variableIndex = definition.variableColumnsEver;
    column.lengthBytes = lengthOf(design);
    if (design.type == ColumnType::Numeric) {
        column.precision = design.precision;
        column.scale = design.scale;
    }
    column.flags = Column::kUpdatable;
    column.flags |= design.furtherFlags;
    if (isSystem) column.flags |= Column::kSystem;
    if (design.isAutoNumber) column.flags |= Column::kAutoNumber;
    if (isVariable(design.type)) {
        ++definition.variableColumnsEver;
        if (design.type == ColumnType::Text && design.compresses && !isSystem) {
            column.extendedFlags = Column::kCompressed;
        }
    } else {
        column.flags |= Column::kFixed;
        if (design.type != ColumnType::Boolean) {
            column.fixedOffset = static_cast<std::uint16_t>(definition.fixedAreaBytes());
        }
    }
    definition.columns.push_back(column);
}

void addIndex(TableDefinition& definition, const IndexDesign& design) {
    IndexDefinition index;
    for (const IndexColumnDesign& part : design.columns) {
        const Column* column = definition.column(part.name);
        assert(column != nullptr);
        index.columns.push_back({column->number, part.ascending});
    }
    index.flags = IndexDefinition::kAlways | design.flags;
    index.name = design.name;
    index.isPrimary = design.isPrimary;

    LogicalIndex logical;
    logical.name = design.name;
    logical.number = static_cast<std::uint32_t>(definition.indexes.size());
    logical.dataBlock = logical.number;
    logical.kind = design.isPrimary ? LogicalIndex::Kind::PrimaryKey : LogicalIndex::Kind::Ordinary;

    definition.indexes.push_back(std::move(index));
    definition.logicalIndexes.push_back(std::move(logical));
}

}  // namespace

TableDefinition makeDefinition(const TableDesign& design) {
    TableDefinition definition;
    definition.kind = design.isSystem ? 'S' : 'N';
    for (const ColumnDesign& column : design.columns)
        addColumn(definition, column, design.isSystem);
    for (const IndexDesign& index : design.indexes)
        addIndex(definition, index);
    for (const Column& column : definition.columns) {
        if (column.isLongValue()) definition.longValueMaps.push_back({column.number, {}, {}});
    }
    const auto byName = [](const auto& a, const auto& b) { return nameIsLess(a.name, b.name); };
    if (design.isSystem) std::sort(definition.columns.begin(), definition.columns.end(), byName);
    std::sort(definition.logicalIndexes.begin(), definition.logicalIndexes.end(), byName);
    return definition;
}

}  // namespace jet
