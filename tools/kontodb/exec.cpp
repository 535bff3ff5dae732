#include <string>
#include <variant>

#include "jet/sql/Execution.h"
#include "jet/sql/Parser.h"
#include "tools/kontodb/CommandLine.h"
#include "tools/kontodb/Commands.h"
#include "tools/kontodb/ProtectedFile.h"
#include "tools/kontodb/StatementText.h"

namespace kontodb {

int exec(std::span<const base::Text> arguments, Console& console) {
    const CommandLine line(arguments, {kPasswordOption, kPasswordFileOption});
    line.requireOperands({u"DATEI", u"ANWEISUNG"});
    const base::Text text = statementOf(line, 1, console);
    const jet::sql::Statement statement = jet::sql::parse(text);
    if (std::holds_alternative<jet::sql::Select>(statement))
        throw UsageError(u"exec führt UPDATE, DELETE und INSERT aus; Zeilen zeigt query.");
    jet::Database database = openProtected(line.operand(0), line, console, jet::LeftJournalRule::RollBack);
    const std::string count = std::to_string(jet::sql::execute(database, statement));
    console.printDone(count + "\n",
                      u"Die Anweisung ist trotzdem ausgeführt; Zahl der Zeilen: " + base::fromUtf8(count) + u".");
    if (count == "0") hintAtWildcards(text, console);
    return kExitSuccess;
}

}  // namespace kontodb
