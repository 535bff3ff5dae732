#include "jet/sql/DeleteExecutor.h"

#include <vector>

#include "jet/sql/RowSearch.h"

namespace jet::sql {

std::int32_t executeDelete(TableWriter& writer, const Delete& statement) {
    const std::vector<RowPointer> rows = RowSearch(writer.table(), statement.where).rows();
    for (const RowPointer row : rows)
        // A relationship of the table with itself may have deleted this row together with another one.
        if (writer.find(row)) writer.remove(row);
    return static_cast<std::int32_t>(rows.size());
}

}  // namespace jet::sql
