#include <string>

#include "base/RuntimeError.h"
#include "jet/Errors.h"
#include "jet/check/Checker.h"
#include "tools/kontodb/CommandLine.h"
#include "tools/kontodb/Commands.h"
#include "tools/kontodb/ProtectedFile.h"
#include "tools/kontodb/Signals.h"
#include "tools/kontodb/WatchedPages.h"

namespace kontodb {
namespace {

constexpr base::TextView kNotesFlag = u"--notes";

void printFindings(const jet::Findings& findings, jet::Finding::Kind kind, std::size_t count, std::string_view rest,
                   Console& console) {
    for (const jet::Finding& finding : findings.kept()) {
        if (finding.kind == kind) console.print(base::toUtf8(finding.line()) + "\n");
    }
    if (count > jet::Findings::kMaxKept)
        console.print("... und " + std::to_string(count - jet::Findings::kMaxKept) + std::string(rest));
}

jet::CheckResult watchedCheck(jet::ReadOperation& operation, Console& console) {
    const Interruption interruption;
    Progress progress(console, "Die Datei wird geprüft");
    WatchedPages pages(operation, progress);
    return jet::checkDatabase(pages, operation.sizeBytes());
}

std::string summary(const jet::CheckResult& result) {
    const auto part = [](std::size_t count, std::string_view noun) {
        return std::to_string(count) + std::string(noun);
    };
    const jet::CheckCounts& counts = result.counts;
    return "In Ordnung: " + part(counts.pages, " Seiten, ") + part(counts.tables, " Tabellen, ") +
           part(counts.rows, " Datensätze, ") + part(counts.indexes, " Indizes, ") +
           part(counts.entries, " Einträge, ") + part(counts.longValues, " lange Werte, ") +
           part(result.findings.noteCount(), " Hinweise");
}

}  // namespace

int check(std::span<const base::Text> arguments, Console& console) {
    const CommandLine line(arguments, {kPasswordOption, kPasswordFileOption}, {kNotesFlag});
    line.requireOperands({u"DATEI"});
    jet::Database database = openProtected(line.operand(0), line, console, jet::LeftJournalRule::Ignore);
    auto operation = database.beginRead();
    if (const auto journal = operation.leftJournal()) {
        // What the file holds now is not what it will hold; its faults are the interrupted writing's.
        console.print("Fehler: " + base::toUtf8(jet::journalLeft(database.path(), *journal).description()) + "\n");
        return kExitFaultsFound;
    }
    const jet::CheckResult result = watchedCheck(operation, console);
    const jet::Findings& findings = result.findings;
    printFindings(findings, jet::Finding::Kind::Fault, findings.faultCount(), " weitere Fehler\n", console);
    if (line.flag(kNotesFlag))
        printFindings(findings, jet::Finding::Kind::Note, findings.noteCount(), " weitere Hinweise\n", console);
    if (!result.isSound()) return kExitFaultsFound;
    const bool areNotesHidden = findings.noteCount() > 0 && !line.flag(kNotesFlag);
    console.print(summary(result) + (areNotesHidden ? " (mit --notes zu sehen)\n" : "\n"));
    return kExitSuccess;
}

}  // namespace kontodb
