#include "jet/change/ColumnRules.h"

#include "jet/WriteErrors.h"
#include "jet/value/ColumnConversion.h"

namespace jet {

using base::Text;
using base::TextView;

ColumnRules::ColumnRules(const Table& table, const ExpressionReader& expressions, WriteKind kind)
    : table_(table), expressions_(expressions), kind_(kind), properties_(table.properties()) {}

/// Nothing for a property that is not there or says nothing.
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
    if (!expression) return convertToColumn(column, base::Null{}, kind_);
    const auto value = expressions_.defaultValue(*expression);
    if (!value || column.isAutoNumber()) {
        throw tableNotWritable(table_.name(), u"Den Standardwert '" + *expression + u"' der Spalte '" + column.name +
                                                  u"' kennt das Modul nicht");
    }
    return convertToColumn(column, *value, kind_);
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
        if (properties_.isRequired(column.name)) throw nullNotAllowed(kind_, nameOf(&column));
        return;
    }
    const auto* text = std::get_if<Text>(&value);
    if (text == nullptr || !text->empty()) return;
    if (!properties_.allowsZeroLength(column.name)) throw emptyTextNotAllowed(kind_, nameOf(&column));
}

void ColumnRules::requireUnderstood() {
    for (const Column& column : table_.definition().columns)
        ruleOf(&column);
    ruleOf(nullptr);
}

/// @throws RuntimeError if there is one that is not understood
const std::optional<ColumnRules::Rule>& ColumnRules::ruleOf(const Column* column) {
    const auto known = rules_.try_emplace(column);
    std::optional<Rule>& rule = known.first->second;
    if (known.second) {
        const auto text = textOf(column, u"ValidationRule");
        if (text) {
            const Text message = textOf(column, u"ValidationText").value_or(Text());
            rule.emplace(
                Rule{*text, message, nameOf(column), expressions_.validationRule(*text, table_.definition(), column)});
        }
    }
    if (rule && !rule->rule) {
        throw tableNotWritable(table_.name(), u"Die Gültigkeitsregel '" + rule->text + u"' für '" + rule->owner +
                                                  u"' kennt das Modul nicht");
    }
    return rule;
}

void ColumnRules::checkRule(const RowValues& row, const Column* column) {
    const std::optional<Rule>& rule = ruleOf(column);
    if (rule && !rule->rule->permits(row)) throw ruleViolated(kind_, rule->message, rule->text, rule->owner);
}

}  // namespace jet
