#include "jet/sql/InsertExecutor.h"

#include <cassert>
#include <vector>

#include "jet/change/TableWriter.h"
#include "jet/expression/TableColumns.h"
#include "jet/sql/RowAssignments.h"
#include "jet/sql/SqlError.h"
#include "jet/sql/TableExpressions.h"

namespace jet::sql {

namespace {

/// The columns that the values are for, in the order of the values.
std::vector<const Column*> targetsOf(const Insert& statement, const TableColumns& columns) {
    std::vector<const Column*> targets;
    for (const base::Text& name : statement.columns) {
        const auto place = columns.find(name);
        if (!place) throw unknownColumnOfInsert(name);
        targets.push_back(&columns.column(*place));
    }
    for (std::size_t place = 0; statement.columns.empty() && place < columns.count(); ++place)
        targets.push_back(&columns.column(place));
    if (targets.size() != statement.values.size()) throw valuesDoNotFitColumns();
    return targets;
}

/// There is no row yet that a value could be taken from.
class NoRow final : public ColumnValues {
public:
    base::Value value(std::size_t) const override {
        assert(false);
        return base::Null{};
    }
};

}  // namespace

std::int32_t executeInsert(PageStore& store, const Insert& statement) {
    const TableExpressions expressions;
    TableWriter writer(store, statement.table, WriteKind::Execute, expressions);
    const TableColumns columns(writer.table().definition());
    const std::vector<const Column*> targets = targetsOf(statement, columns);
    RowAssignments assignments;
    for (std::size_t i = 0; i < targets.size(); ++i)
        assignments.add(*targets[i], BoundExpression(statement.values[i], {}, {}));
    writer.insert(assignments.valuesFor(NoRow()));
    return 1;
}

}  // namespace jet::sql
