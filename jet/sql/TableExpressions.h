#pragma once

#include "jet/change/ExpressionReader.h"

namespace jet::sql {

/// Defaults and validation rules, read as expressions of statements.
///
/// A default is a constant, Now() or Date(); an equals sign may stand before it. In a column's rule the column may be
/// left out: "> 0", "Is Not Null", "'a' Or 'b'". A rule with LIKE is not understood, since its wildcards depend on a
/// setting of the program that wrote it.
class TableExpressions final : public ExpressionReader {
public:
    std::optional<base::Value> defaultValue(base::TextView expression) const override;
    std::unique_ptr<ValidationRule> validationRule(base::TextView rule, const TableDefinition& table,
                                                   const Column* column) const override;
};

}  // namespace jet::sql
