#include <string>
#include <string_view>
#include <vector>

#include "accounts/AccountTable.h"
#include "jet/sql/QueryExecutor.h"
#include "tools/kontodb/CommandLine.h"
#include "tools/kontodb/Commands.h"
#include "tools/kontodb/ProtectedFile.h"
#include "tools/kontodb/ResultPrinter.h"
#include "tools/kontodb/Script.h"
#include "tools/kontodb/StatementFault.h"
#include "tools/kontodb/StatementText.h"

namespace kontodb {
namespace {

using Form = ResultStyle::Form;

constexpr base::TextView kCsvFlag = u"--csv";
constexpr base::TextView kNoHeaderFlag = u"--no-header";
constexpr base::TextView kMarkFlag = u"--bom";
constexpr base::TextView kDecimalCommaFlag = u"--decimal-comma";
constexpr base::TextView kNullOption = u"--null";
constexpr base::TextView kSeparatorOption = u"--separator";

constexpr std::string_view kHiddenPasswords =
    "Hinweis: Die Spalte BenKTO_Pass fehlt bei SELECT *; wer die Passwörter braucht, nennt die Spalten.\n";

/// An option that makes no sense with the form would have no effect unseen.
void requireFitting(const CommandLine& line, bool isFitting, std::initializer_list<base::TextView> options,
                    base::TextView why) {
    for (const base::TextView option : options) {
        if (line.flag(option) && !isFitting) throw UsageError(u"Die Option " + base::Text(option) + base::Text(why));
    }
}

std::string separatorOf(const CommandLine& line) {
    const base::Text text = line.option(kSeparatorOption).value_or(u",");
    if (text == u"\\t" || text == u"tab") return "\t";
    if (text.size() != 1 || text.find_first_of(u"\"\r\n") != base::Text::npos)
        throw UsageError(u"--separator verlangt ein Zeichen, zum Beispiel \";\", oder tab.");
    return base::toUtf8(text);
}

ResultStyle styleOf(const CommandLine& line, Console& console) {
    const bool isJson = line.flag(kJsonFlag);
    const bool isCsv = line.flag(kCsvFlag);
    requireFitting(line, !isJson, {kCsvFlag, kNoHeaderFlag, kNullOption}, u" passt nicht zu --json.");
    requireFitting(line, isCsv, {kSeparatorOption, kMarkFlag, kDecimalCommaFlag}, u" gibt es nur mit --csv.");
    ResultStyle style;
    style.form = isJson ? Form::Json : isCsv ? Form::Csv : console.isTerminal() ? Form::Aligned : Form::Lines;
    style.hasHeader = !line.flag(kNoHeaderFlag);
    if (const auto null = line.option(kNullOption)) style.null = base::toUtf8(*null);
    style.separator = separatorOf(line);
    style.hasMark = line.flag(kMarkFlag);
    style.hasDecimalComma = line.flag(kDecimalCommaFlag);
    return style;
}

/// Leaves the passwords of accounts out of a result with all columns. A marker in their place would become a password
/// if the result is imported later.
/// @return false if the rows have no passwords
bool hidePasswords(jet::sql::ResultSet& rows) {
    std::vector<std::size_t> shown;
    for (std::size_t column = 0; column < rows.columnCount(); ++column)
        if (!base::equalsIgnoringAsciiCase(rows.column(column).name, tolv::accountTable::kPass))
            shown.push_back(column);
    if (shown.size() == rows.columnCount()) return false;
    rows.keepColumns(shown);
    return true;
}

bool foundNothing(const jet::sql::ResultSet& rows, const jet::sql::Select& select) {
    return rows.rowCount() == 0 || (select.countsRows && rows.value(0, 0) == base::Value(0));
}

}  // namespace

int query(std::span<const base::Text> arguments, Console& console) {
    const CommandLine line(arguments, {kPasswordOption, kPasswordFileOption, kNullOption, kSeparatorOption},
                           {kJsonFlag, kCsvFlag, kNoHeaderFlag, kMarkFlag, kDecimalCommaFlag});
    line.requireOperands({u"DATEI", u"ANWEISUNG"});
    const ResultStyle style = styleOf(line, console);
    const Script script = Script::ofOne(statementOf(line, 1, console));
    const jet::sql::Statement& statement = script.parts()[0].statement;
    const auto* select = std::get_if<jet::sql::Select>(&statement);
    if (select == nullptr) throw UsageError(u"query zeigt Zeilen; UPDATE, DELETE und INSERT führt exec aus.");
    jet::Database database = openProtected(line.operand(0), line, console);
    // Whoever reads what is printed may take his time: nothing is locked meanwhile.
    jet::sql::ResultSet rows = [&] {
        auto operation = database.beginRead();
        try {
            return jet::sql::executeQuery(operation, *select);
        } catch (const jet::StatementError& error) {
            throw script.explained(error, 0, adviceOnNames(statement, error, operation));
        }
    }();
    const bool isHidden = select->columns.empty() && hidePasswords(rows);
    printResult(rows, style, console);
    if (isHidden) console.printError(kHiddenPasswords);
    hintAtWildcards(statement, foundNothing(rows, *select), console);
    return kExitSuccess;
}

}  // namespace kontodb
