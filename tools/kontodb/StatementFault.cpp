#include "tools/kontodb/StatementFault.h"

#include <algorithm>
#include <string_view>
#include <variant>
#include <vector>

#include "jet/expression/ExpressionErrors.h"
#include "jet/sql/SqlError.h"
#include "jet/table/Catalog.h"
#include "jet/table/Table.h"
#include "tools/kontodb/AlignedColumns.h"
#include "tools/kontodb/Suggestion.h"

namespace kontodb {
namespace {

/// The longest part of a line that is shown, and how much of it may come before the place.
constexpr std::size_t kUnits = 72;
constexpr std::size_t kUnitsBefore = 45;

constexpr std::size_t kMostColumnsNamed = 12;

constexpr base::TextView kBlanks = u" \t\r\n";

bool isQuote(char16_t unit) {
    return unit == u'\'' || unit == u'"';
}

std::size_t beginOfLine(base::TextView text, std::size_t place) {
    const std::size_t before = place == 0 ? base::TextView::npos : text.rfind(u'\n', place - 1);
    return before == base::TextView::npos ? 0 : before + 1;
}

std::size_t charactersIn(std::string_view utf8) {
    return static_cast<std::size_t>(
        std::ranges::count_if(utf8, [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80; }));
}

/// If only blanks follow the place, the end of the text before them.
std::size_t visiblePlace(base::TextView text, std::size_t place) {
    const bool isAtEnd = text.find_first_not_of(kBlanks, place) == base::TextView::npos;
    if (!isAtEnd) return place;
    const std::size_t last = text.find_last_not_of(kBlanks);
    return last == base::TextView::npos ? 0 : last + 1;
}

std::string shown(base::TextView text) {
    return withoutControls(base::toUtf8(text));
}

std::string namesOf(const std::vector<const jet::Column*>& columns) {
    std::string names;
    for (const jet::Column* column : columns)
        names += (names.empty() ? "" : ", ") + shown(column->name);
    return names;
}

const base::Text& tableOf(const jet::sql::Statement& statement) {
    return std::visit([](const auto& each) -> const base::Text& { return each.table; }, statement);
}

}  // namespace

std::size_t lineNumber(base::TextView text, std::size_t place) {
    return 1 + static_cast<std::size_t>(std::ranges::count(text.substr(0, visiblePlace(text, place)), u'\n'));
}

std::string shownLine(base::TextView text, std::size_t place, bool hasCaret) {
    place = visiblePlace(text, place);
    std::size_t begin = beginOfLine(text, place);
    begin = std::min(text.find_first_not_of(u" \t", begin), place);
    std::size_t end = std::min(text.find_first_of(u"\r\n", place), text.size());
    const bool isLong = end - begin > kUnits;
    const bool cutsBegin = isLong && place - begin > kUnitsBefore;
    if (cutsBegin) begin = std::min(place - kUnitsBefore, end - kUnits);
    const bool cutsEnd = end - begin > kUnits;
    if (cutsEnd) end = begin + kUnits;
    const std::string before = (cutsBegin ? "  ..." : "  ") + shown(text.substr(begin, place - begin));
    const std::string after = shown(text.substr(place, end - place)) + (cutsEnd ? "..." : "");
    const std::string caret = hasCaret ? std::string(charactersIn(before), ' ') + "^\n" : "";
    return before + after + "\n" + caret;
}

std::string adviceOnSyntax(base::TextView statement, const jet::StatementError& error) {
    if (error.description() == jet::sql::textBehindStatement().description())
        return "Mehrere Anweisungen führt aus: kontodb exec DATEI --file SQLDATEI\n";
    const std::size_t place = error.place();
    const bool isBehindQuote = place > 0 && place < statement.size() && isQuote(statement[place - 1]);
    const bool isOpen = error.number() == jet::kSyntaxError && place < statement.size() && isQuote(statement[place]);
    if (isOpen || (isBehindQuote && base::TextView(u",;)= ").find(statement[place]) == base::TextView::npos))
        return "Ein Text steht in '...'; ein Apostroph darin wird doppelt geschrieben: 'O''Neil'.\n";
    return {};
}

std::string adviceOnNames(const jet::sql::Statement& statement, const jet::StatementError& error,
                          jet::PageSource& source) {
    const base::Text& column = error.unknownColumn();
    const auto table = column.empty() ? std::nullopt : jet::openTable(source, tableOf(statement));
    if (!table) return {};
    const auto* insert = std::get_if<jet::sql::Insert>(&statement);
    const bool isValue = insert != nullptr && (insert->columns.empty() || insert->columns.back().place < error.place());
    if (isValue) return "In VALUES stehen nur Werte; ein Text steht in '...'.\n";
    const auto columns = table->definition().columnsForDisplay();
    std::vector<base::TextView> names;
    names.reserve(columns.size());
    for (const jet::Column* each : columns)
        names.push_back(each->name);
    const base::Text near = suggestion(column, names);
    std::string advice = "Die Tabelle '" + shown(table->name()) + "' hat keine Spalte '" + shown(column) + "'.";
    if (!near.empty()) return advice + shown(near) + "\n";
    if (names.size() <= kMostColumnsNamed)
        advice += " Sie hat: " + namesOf(columns) + ".";
    else
        advice += " Die Spalten nennt: kontodb schema DATEI TABELLE.";
    return advice + "\nEin Text steht in '...', ein Name mit Leerzeichen in [...].\n";
}

}  // namespace kontodb
