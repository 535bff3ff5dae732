#include "jet/sql/InsertExecutor.h"

#include <cassert>
#include <vector>

#include "jet/expression/StatementError.h"
#include "jet/sql/RowAssignments.h"
#include "jet/sql/SqlError.h"

namespace jet::sql {

namespace {

/// The column for each value, in the order of the values.
std::vector<const Column*> targetsOf(const Insert& statement, const std::vector<const Column*>& columns) {
    std::vector<const Column*> targets;
    for (const ColumnName& name : statement.columns) {
        const auto place = findColumn(columns, name.name);
        if (!place) throw StatementError(unknownColumnOfInsert(name.name), name.place, name.name);
        targets.push_back(columns[*place]);
    }
    for (std::size_t place = 0; statement.columns.empty() && place < columns.size(); ++place)
        targets.push_back(columns[place]);
    if (targets.size() != statement.values.size()) throw valuesDoNotFitColumns();
    return targets;
}

/// The values of an INSERT cannot refer to a row, because there is none yet.
class NoRow final : public RowValues {
public:
    base::Value valueOf(const Column&) const override {
        assert(false);
        return base::Null{};
    }
};

}  // namespace

std::int32_t executeInsert(TableWriter& writer, const Insert& statement) {
    const auto columns = writer.table().definition().columnsForDisplay();
    const std::vector<const Column*> targets = targetsOf(statement, columns);
    RowAssignments assignments;
    for (std::size_t i = 0; i < targets.size(); ++i)
        assignments.add(*targets[i], BoundExpression(statement.values[i], {}, {}));
    writer.insert(assignments.valuesFor(NoRow()));
    return 1;
}

}  // namespace jet::sql
