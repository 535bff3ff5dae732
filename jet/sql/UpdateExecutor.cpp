#include "jet/sql/UpdateExecutor.h"

#include <vector>

#include "jet/change/TableWriter.h"
#include "jet/expression/ExpressionErrors.h"
#include "jet/expression/TableColumns.h"
#include "jet/sql/RowAssignments.h"
#include "jet/sql/RowSearch.h"
#include "jet/sql/TableExpressions.h"

namespace jet::sql {

std::int32_t executeUpdate(PageStore& store, const Update& statement) {
    const TableExpressions expressions;
    TableWriter writer(store, statement.table, WriteKind::Execute, expressions);
    const TableColumns columns(writer.table().definition());
    RowAssignments assignments;
    for (const auto& [name, expression] : statement.values) {
        const auto place = columns.find(name);
        if (!place) throw missingParameter();
        assignments.add(columns.column(*place), BoundExpression(expression, writer.table().name(), columns.names()));
    }
    std::vector<RowPointer> rows;
    RowSearch(writer.table(), columns, statement.where).forEach([&](const Row& row) { rows.push_back(row.pointer); });
    for (const RowPointer pointer : rows) {
        const Row row = writer.table().rowAt(pointer);
        writer.update(pointer, assignments.valuesFor(ValuesOfRow(writer.table(), columns, row)));
    }
    return static_cast<std::int32_t>(rows.size());
}

}  // namespace jet::sql
