#pragma once

#include <memory>
#include <optional>

#include "base/Text.h"
#include "base/Value.h"
#include "jet/table/TableDefinition.h"

/// The expressions that a table carries in its properties. Whoever understands statements understands them too; the
/// tables themselves only ask.
namespace jet {

/// The values of a row that is about to be stored.
class RowValues {
public:
    virtual ~RowValues() = default;
    virtual base::Value valueOf(const Column& column) const = 0;
};

/// A validation rule, ready to be asked for each row.
class ValidationRule {
public:
    virtual ~ValidationRule() = default;

    /// Whether the rule is true, neither false nor unknown.
    virtual bool permits(const RowValues& row) const = 0;
};

class ExpressionReader {
public:
    virtual ~ExpressionReader() = default;

    /// The value that a default stands for: a constant, or the present time or day.
    /// @return nothing if the expression is not understood
    virtual std::optional<base::Value> defaultValue(base::TextView expression) const = 0;

    /// @param table   must outlive the rule
    /// @param column  of which the rule speaks without naming it; null for the rule of a table
    /// @return null if the rule is not understood
    virtual std::unique_ptr<ValidationRule> validationRule(base::TextView rule, const TableDefinition& table,
                                                           const Column* column) const = 0;
};

}  // namespace jet
