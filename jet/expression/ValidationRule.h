#pragma once

#include "base/Text.h"
#include "jet/expression/BoundExpression.h"
#include "jet/expression/RowValues.h"
#include "jet/table/TableDefinition.h"

namespace jet {

/// A validation rule of a table or column, read from its text and ready to be asked for each row.
///
/// In a column's rule the column may be left out: "> 0", "Is Not Null", "'a' Or 'b'". A rule with LIKE is not
/// understood, since its wildcards depend on a setting of the program that wrote it.
class ValidationRule {
public:
    /// @param table   must outlive the rule
    /// @param column  of which the rule speaks without naming it; null for the rule of a table
    /// @throws base::RuntimeError if the rule is not understood
    ValidationRule(base::TextView rule, const TableDefinition& table, const Column* column);

    /// Whether the rule is true, neither false nor unknown.
    bool permits(const RowValues& row) const { return condition_.holds(row); }

private:
    BoundExpression condition_;
};

}  // namespace jet
