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

/// What the properties of a table demand of its rows: required, zero length, defaults, validation rules. What it does
/// not understand it refuses when it would matter, naming it.
class ColumnRules {
public:
    /// @param table  must outlive the rules
    ColumnRules(const Table& table, WriteKind kind);

    /// What a new row has in the column if nobody assigns anything; of an auto number null.
    /// @throws RuntimeError if the default is not understood, or the column assigns its own values
    base::Value defaultOf(const Column& column) const;

    /// Whether all rules are understood, before there is a row to check: a new one may get values in any column.
    /// @throws RuntimeError for the first that is not
    void requireUnderstood();

    /// @param row       values as the columns hold them
    /// @param assigned  columns that got a value, or the default in a new row
    /// @param isNew     then columns that got none count too, unless they have only a rule
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
    WriteKind kind_;
    PropertyBlob properties_;
    std::map<const Column*, std::optional<Rule>> rules_;  ///< as far as they were asked for; the table's under null
};

}  // namespace jet
