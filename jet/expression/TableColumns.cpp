#include "jet/expression/TableColumns.h"

namespace jet {

namespace {

ValueClass classOf(ColumnType type) {
    switch (type) {
        case ColumnType::Text:
        case ColumnType::Memo:
            return ValueClass::Text;
        case ColumnType::Binary:
        case ColumnType::Ole:
        case ColumnType::Block:
            return ValueClass::Bytes;
        case ColumnType::Guid:
            return ValueClass::Guid;
        default:
            return ValueClass::Number;
    }
}

}  // namespace

TableColumns::TableColumns(const TableDefinition& definition) : columns_(definition.columnsForDisplay()) {
    for (const Column* column : columns_)
        names_.push_back({column->name, classOf(column->type), column->textOrder});
}

}  // namespace jet
