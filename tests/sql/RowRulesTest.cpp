#include <gtest/gtest.h>

#include "base/RuntimeError.h"
#include "jet/expression/DefaultValue.h"
#include "jet/expression/ValidationRule.h"
#include "jet/fresh/TableDesign.h"

namespace jet {
namespace {

using base::Text;
using base::Value;

/// The result of `read`, or nothing if it throws.
template <typename Read, typename... Given>
auto unlessRefused(const Read& read, const Given&... given) -> std::optional<decltype(read(given...))> {
    try {
        return read(given...);
    } catch (const base::RuntimeError&) {
        return std::nullopt;
    }
}

TEST(RowRules, DefaultsAreConstantsOrTheCurrentTime) {
    const struct {
        Text expression;
        std::optional<Value> value;
    } cases[] = {
        {u"0", Value(0)},
        {u"=-5", Value(-5)},
        {u"\"Bonn \"\"Süd\"\"\"", Value(Text(u"Bonn \"Süd\""))},
        {u"'x'", Value(Text(u"x"))},
        {u"Yes", Value(true)},
        {u"= Off", Value(false)},
        {u"True", Value(true)},
        {u"Null", Value(base::Null{})},
        {u"#1/2/2004#", Value(base::Date{37988})},
        {u"", std::nullopt},
        {u"Bonn", std::nullopt},
        {u"1 + 1", std::nullopt},
        {u"1 = 1", std::nullopt},
        {u"5 5", std::nullopt},
        {u"'offen", std::nullopt},
        {u"GenUniqueID()", std::nullopt},
        {u"Now() + 1", std::nullopt},
        {u"Date", std::nullopt},
    };
    for (const auto& [expression, value] : cases)
        EXPECT_EQ(unlessRefused(defaultValue, expression), value) << base::toUtf8(expression);

    const auto before = defaultValue(u"Now()");
    const auto day = defaultValue(u"=date( )");
    const auto after = defaultValue(u"NOW()");
    EXPECT_GT(std::get<base::Date>(before).days, 45000);
    EXPECT_LE(std::get<base::Date>(before).days, std::get<base::Date>(after).days);
    EXPECT_LE(std::get<base::Date>(day).days, std::get<base::Date>(after).days);
    EXPECT_LT(std::get<base::Date>(before).days - 1, std::get<base::Date>(day).days);
}

/// A row with the values {Nr, Name, Menge}.
class GivenRow final : public RowValues {
public:
    explicit GivenRow(std::vector<Value> values) : values_(std::move(values)) {}
    Value valueOf(const Column& column) const override { return values_[column.number]; }

private:
    std::vector<Value> values_;
};

TEST(RowRules, AColumnRuleMayOmitTheNameOfItsColumn) {
    TableDesign design;
    design.name = u"Ware";
    design.columns = {{u"Nr", ColumnType::Long}, {u"Name", ColumnType::Text, 50}, {u"Menge", ColumnType::Long}};
    const TableDefinition table = makeDefinition(design);
    const auto readRule = [&](const Text& rule, const Column* column) { return ValidationRule(rule, table, column); };
    const Value null = base::Null{};
    enum Verdict { Yes, No, NotUnderstood };
    const struct {
        Text rule;
        base::TextView column;
        Value value;
        Verdict verdict;
    } cases[] = {
        {u">0", u"Menge", 1, Yes},
        {u">0", u"Menge", 0, No},
        {u">0", u"Menge", null, No},
        {u">0 Or Is Null", u"Menge", null, Yes},
        {u"Is Null Or (>=10 And <20)", u"Menge", 15, Yes},
        {u"Is Null Or (>=10 And <20)", u"Menge", 20, No},
        {u"Not Between 5 And 7", u"Menge", 6, No},
        {u"Between 5 And 7", u"Menge", 6, Yes},
        {u"In (1, 2)", u"Menge", 3, No},
        {u"3 Or 4", u"Menge", 4, Yes},
        {u"3 Or 4", u"Menge", 5, No},
        {u"\"A\" Or \"B\"", u"Name", Text(u"b"), Yes},
        {u"<>\"\"", u"Name", Text(), No},
        {u"Is Not Null", u"Name", Text(u"x"), Yes},
        {u"[Menge]>=[Nr]", u"Menge", 99, No},
        {u">[Nr]", u"Menge", 101, Yes},
        {u"[Menge] > 5 And [Nr] = 100", u"", null, No},
        {u">5", u"", null, NotUnderstood},
        {u"Like 'A%'", u"Name", Text(u"A"), NotUnderstood},
        {u"Len([Name]) > 3", u"Name", Text(u"A"), NotUnderstood},
        {u"(5) < [Menge]", u"Menge", 6, NotUnderstood},
        {u">0 <5", u"Menge", 3, NotUnderstood},
        {u">'a'", u"Menge", 3, NotUnderstood},
        {u">[Preis]", u"Menge", 3, NotUnderstood},
        {u">", u"Menge", 3, NotUnderstood},
        {u"'x'", u"Menge", 3, NotUnderstood},
    };
    for (const auto& [rule, name, value, verdict] : cases) {
        const Column* column = name.empty() ? nullptr : table.column(name);
        const auto read = unlessRefused(readRule, rule, column);
        ASSERT_EQ(read.has_value(), verdict != NotUnderstood) << base::toUtf8(rule);
        if (!read) continue;
        std::vector<Value> row{100, Text(u"Name"), 1};
        if (column != nullptr) row[column->number] = value;
        EXPECT_EQ(read->permits(GivenRow(row)), verdict == Yes) << base::toUtf8(rule);
    }
}

}  // namespace
}  // namespace jet
