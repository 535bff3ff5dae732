#include "jet/change/ColumnRules.h"

#include "base/RuntimeError.h"
#include "jet/WriteErrors.h"
#include "jet/expression/DefaultValue.h"
#include "jet/value/ColumnConversion.h"

namespace jet {

using base::Text;
using base::TextView;

ColumnRules::ColumnRules(const Table& table) : table_(table), properties_(table.properties()) {}

/// Nothing if there is no such property or it is empty.
std::optional<Text> ColumnRules::textOf(const Column* column, TextView property) const {
    const Property* found = properties_.find(column == nullptr ? TextView{} : TextView{column->name}, property);
    if (found == nullptr) return std::nullopt;
    const Text text = found->asText();
    if (base::trimBlanks(text).empty()) return std::nullopt;
    return text;
}

Text ColumnRules::nameOf(const Column* column) const {
    return column == nullptr ? table_.name() : table_.name() + u"." + column->name;
}

base::Value ColumnRules::defaultOf(const Column& column) const {
    const auto expression = textOf(&column, u"DefaultValue");
    if (column.type == ColumnType::Guid && (column.flags & Column::kAutoGuid) != 0) {
        throw tableNotWritable(table_.name(),
                               u"Werte, die sich die Spalte '" + column.name + u"' selbst gibt, kennt das Modul nicht");
    }
    if (!expression) return convertToColumn(column, base::Null{});
    return convertToColumn(column, readDefault(column, *expression));
}

/// @throws RuntimeError if it is not understood, or the column is an auto number
base::Value ColumnRules::readDefault(const Column& column, const Text& expression) const {
    try {
        if (!column.isAutoNumber()) return defaultValue(expression);
    } catch (const base::RuntimeError&) {
        // The error of the expression would be about a statement, and the user wrote none.
    }
    throw tableNotWritable(table_.name(), u"Den Standardwert '" + expression + u"' der Spalte '" + column.name +
                                              u"' kennt das Modul nicht");
}

void ColumnRules::check(const RowValues& row, const std::vector<const Column*>& assigned, bool isNew) {
    if (isNew) {
        for (const Column& column : table_.definition().columns)
            checkValue(column, row.valueOf(column));
    }
    for (const Column* column : assigned) {
        if (!isNew) checkValue(*column, row.valueOf(*column));
        checkRule(row, column);
    }
    checkRule(row, nullptr);
}

void ColumnRules::checkValue(const Column& column, const base::Value& value) const {
    if (base::isNull(value)) {
        if (properties_.isRequired(column.name)) throw nullNotAllowed(nameOf(&column));
        return;
    }
    const auto* text = std::get_if<Text>(&value);
    if (text == nullptr || !text->empty()) return;
    if (!properties_.allowsZeroLength(column.name)) throw emptyTextNotAllowed(nameOf(&column));
}

void ColumnRules::requireUnderstood() {
    for (const Column& column : table_.definition().columns)
        ruleOf(&column);
    ruleOf(nullptr);
}

/// @throws RuntimeError if the column has a rule that is not understood
std::optional<ColumnRules::Rule> ColumnRules::readRule(const Column* column) const {
    const auto text = textOf(column, u"ValidationRule");
    if (!text) return std::nullopt;
    const Text message = textOf(column, u"ValidationText").value_or(Text());
    try {
        return Rule{*text, message, nameOf(column), ValidationRule(*text, table_.definition(), column)};
    } catch (const base::RuntimeError&) {
        throw tableNotWritable(table_.name(), u"Die Gültigkeitsregel '" + *text + u"' für '" + nameOf(column) +
                                                  u"' kennt das Modul nicht");
    }
}

/// @throws RuntimeError as readRule(), in every call
const std::optional<ColumnRules::Rule>& ColumnRules::ruleOf(const Column* column) {
    const auto known = rules_.find(column);
    return known != rules_.end() ? known->second : rules_.emplace(column, readRule(column)).first->second;
}

void ColumnRules::checkRule(const RowValues& row, const Column* column) {
    const std::optional<Rule>& rule = ruleOf(column);
    if (rule && !rule->rule.permits(row)) throw ruleViolated(rule->message, rule->text, rule->owner);
}

}  // namespace jet
