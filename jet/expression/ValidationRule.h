#pragma once

#include "base/Text.h"
#include "jet/expression/BoundExpression.h"
#include "jet/expression/RowValues.h"
#include "jet/table/TableDefinition.h"

namespace jet {

/// A validation rule of a table or column, read from its text and ready to be evaluated for each row.
///
/// In the rule of a column, the column may be left out: "> 0", "Is Not Null", "'a' Or 'b'". Rules with LIKE are not
/// understood, because their wildcards depend on a setting of the program that wrote them.
class ValidationRule {
public:
    /// @param table   must outlive the rule
    /// @param column  the column that the rule may leave out; null for the rule of a table
    /// @throws base::RuntimeError if the rule is not understood
    ValidationRule(base::TextView rule, const TableDefinition& table, const Column* column);

    /// Whether the rule is true. If it is false or unknown, this is false.
    bool permits(const RowValues& row) const { return condition_.holds(row); }

private:
    BoundExpression condition_;
};

}  // namespace jet
