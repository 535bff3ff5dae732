#include "jet/sql/UpdateExecutor.h"

#include <vector>

#include "jet/expression/ExpressionErrors.h"
#include "jet/sql/RowAssignments.h"
#include "jet/sql/RowSearch.h"

namespace jet::sql {

std::int32_t executeUpdate(TableWriter& writer, const Update& statement) {
    const auto columns = writer.table().definition().columnsForDisplay();
    RowAssignments assignments;
    for (const auto& [name, expression] : statement.values) {
        const auto place = findColumn(columns, name.name);
        if (!place) throw missingParameter(name.table, name.name, name.place);
        assignments.add(*columns[*place], BoundExpression(expression, writer.table().name(), columns));
    }
    const std::vector<RowPointer> rows = RowSearch(writer.table(), statement.where).rows();
    for (const RowPointer pointer : rows) {
        const Row row = writer.table().rowAt(pointer);
        writer.update(pointer, assignments.valuesFor(StoredValues(writer.table().source(), row.view)));
    }
    return static_cast<std::int32_t>(rows.size());
}

}  // namespace jet::sql
