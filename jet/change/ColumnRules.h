#pragma once

#include <map>
#include <optional>
#include <vector>

#include "base/Text.h"
#include "base/Value.h"
#include "jet/Errors.h"
#include "jet/expression/ValidationRule.h"
#include "jet/table/PropertyBlob.h"
#include "jet/table/Table.h"

namespace jet {

/// The rules in the properties of a table: required values, texts without characters, defaults, validation rules. A
/// rule that is not understood causes an error that names it, as soon as the rule would have to be applied.
class ColumnRules {
public:
    /// @param table  must outlive the rules
    explicit ColumnRules(const Table& table);

    /// The value of the column in a new row, if no value is assigned; for an auto number null.
    /// @throws RuntimeError if the default is not understood, or the column assigns its own values
    base::Value defaultOf(const Column& column) const;

    /// Checks that all rules are understood, before there is a row: a new row may get values in any column.
    /// @throws RuntimeError for the first that is not
    void requireUnderstood();

    /// @param row       values, converted to the types of their columns
    /// @param assigned  columns to which a value was assigned, in a new row also those with a default
    /// @param isNew     if so, all other columns are checked, too, except for their validation rules
    /// @throws RuntimeError for the first rule that is broken
    void check(const RowValues& row, const std::vector<const Column*>& assigned, bool isNew);

private:
    struct Rule {
        base::Text text;
        base::Text message;
        base::Text owner;
        ValidationRule rule;
    };
    void checkValue(const Column& column, const base::Value& value) const;
    base::Value readDefault(const Column& column, const base::Text& expression) const;
    std::optional<Rule> readRule(const Column* column) const;
    const std::optional<Rule>& ruleOf(const Column* column);
    void checkRule(const RowValues& row, const Column* column);
    std::optional<base::Text> textOf(const Column* column, base::TextView property) const;
    base::Text nameOf(const Column* column) const;

    const Table& table_;
    PropertyBlob properties_;
    std::map<const Column*, std::optional<Rule>> rules_;  ///< read when needed; null is the table's own rule
};

}  // namespace jet
