#include <cstdint>
#include <numeric>
#include <string>
#include <variant>
#include <vector>

#include "jet/sql/Execution.h"
#include "jet/transaction/Transaction.h"
#include "tools/kontodb/CommandLine.h"
#include "tools/kontodb/Commands.h"
#include "tools/kontodb/InterruptiblePages.h"
#include "tools/kontodb/ProtectedFile.h"
#include "tools/kontodb/Script.h"
#include "tools/kontodb/Signals.h"
#include "tools/kontodb/StatementFault.h"
#include "tools/kontodb/StatementText.h"

namespace kontodb {
namespace {

constexpr base::TextView kFileOption = u"--file";
constexpr base::TextView kAllFlag = u"--all";

using RowCounts = std::vector<std::int32_t>;

/// An operand is only one statement: another program may have put a name with a semicolon into it.
Script scriptOf(const CommandLine& line, Console& console) {
    const auto file = line.option(kFileOption);
    if (file && line.count() > 1)
        throw UsageError(u"Die Anweisung steht entweder in der Datei von --file oder dahinter.");
    line.requireOperands({u"DATEI", u"ANWEISUNG"}, file ? 1 : 0);
    if (!file && line.operand(1) != kStandardInput) return Script::ofOne(line.operand(1));
    Script script = Script::ofMany(statementsIn(file.value_or(base::Text(kStandardInput)), line, console));
    if (script.parts().empty()) throw UsageError(u"Es ist keine Anweisung da.");
    return script;
}

base::Text numbered(const Script& script, std::size_t part) {
    return script.parts().size() == 1 ? base::Text() : u"Anweisung " + base::decimal(part + 1) + u": ";
}

void requireIntended(const Script& script, bool mayChangeAll) {
    for (std::size_t part = 0; part < script.parts().size(); ++part) {
        const auto& statement = script.parts()[part].statement;
        if (std::holds_alternative<jet::sql::Select>(statement))
            throw UsageError(numbered(script, part) + u"exec führt UPDATE, DELETE und INSERT aus; Zeilen zeigt query.");
        const auto refuse = [&](base::TextView deed, const base::Text& table) {
            throw UsageError(numbered(script, part) + base::Text(deed) + u" alle Zeilen der Tabelle '" + table +
                             u"'. Ist das gemeint, geben Sie --all an; sonst fehlt WHERE.");
        };
        if (mayChangeAll) continue;
        const auto* update = std::get_if<jet::sql::Update>(&statement);
        const auto* remove = std::get_if<jet::sql::Delete>(&statement);
        if (update != nullptr && !update->where) refuse(u"UPDATE ohne WHERE ändert", update->table);
        if (remove != nullptr && !remove->where) refuse(u"DELETE ohne WHERE löscht", remove->table);
    }
}

std::int32_t executePart(jet::sql::StatementRun& run, jet::PageSource& pages, const Script& script, std::size_t part) {
    const jet::sql::Statement& statement = script.parts()[part].statement;
    try {
        return run.execute(statement);
    } catch (const jet::StatementError& error) {
        throw script.explained(error, part, adviceOnNames(statement, error, pages));
    } catch (const base::RuntimeError& error) {
        throw script.explained(error, part, {});
    }
}

/// All statements in one transaction; each sees what the ones before it have changed.
RowCounts execute(jet::Database& database, const Script& script, bool isDryRun) {
    const Interruption interruption;
    jet::Transaction transaction(database);
    InterruptiblePages pages(transaction);
    jet::sql::StatementRun run(pages);
    RowCounts counts;
    for (std::size_t part = 0; part < script.parts().size(); ++part)
        counts.push_back(executePart(run, pages, script, part));
    Interruption::check();
    if (isDryRun)
        transaction.drop();
    else
        transaction.commit();
    return counts;
}

/// One number in each line; on a screen with words, if there are several.
std::string linesOf(const RowCounts& counts, bool isScreen) {
    std::string lines;
    for (std::size_t part = 0; part < counts.size(); ++part) {
        const bool hasWords = isScreen && counts.size() > 1;
        if (hasWords) lines += "Anweisung " + std::to_string(part + 1) + ": ";
        lines += std::to_string(counts[part]) + (!hasWords ? "\n" : counts[part] == 1 ? " Zeile\n" : " Zeilen\n");
    }
    return lines;
}

base::Text stillDone(const RowCounts& counts) {
    const auto sum = std::accumulate(counts.begin(), counts.end(), std::int64_t{0});
    return (counts.size() == 1 ? u"Die Anweisung ist trotzdem ausgeführt; Zahl der Zeilen: "
                               : u"Die Anweisungen sind trotzdem ausgeführt; Zahl aller Zeilen: ") +
           base::decimal(sum) + u".";
}

}  // namespace

int exec(std::span<const base::Text> arguments, Console& console) {
    const CommandLine line(arguments, {kPasswordOption, kPasswordFileOption, kFileOption}, {kAllFlag, kDryRunFlag});
    if (line.count() == 0) line.requireOperands({u"DATEI", u"ANWEISUNG"});
    const Script script = scriptOf(line, console);
    requireIntended(script, line.flag(kAllFlag));
    const bool isDryRun = line.flag(kDryRunFlag);
    const auto leftJournal = isDryRun ? jet::LeftJournalRule::Refuse : jet::LeftJournalRule::RollBack;
    jet::Database database = openProtected(line.operand(0), line, console, leftJournal);
    const RowCounts counts = execute(database, script, isDryRun);
    const std::string lines = linesOf(counts, console.isTerminal());
    if (isDryRun) {
        console.print(lines);
        console.printError("Probelauf: Die Datei ist unverändert.\n");
    } else {
        console.printDone(lines, stillDone(counts));
    }
    for (std::size_t part = 0; part < counts.size(); ++part)
        if (hintAtWildcards(script.parts()[part].statement, counts[part] == 0, console)) break;
    return kExitSuccess;
}

}  // namespace kontodb
