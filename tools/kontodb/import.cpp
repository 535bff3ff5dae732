#include <fstream>
#include <iterator>
#include <string>

#include "accounts/AccountTable.h"
#include "jet/Errors.h"
#include "jet/transaction/Transaction.h"
#include "tools/kontodb/AccountImport.h"
#include "tools/kontodb/AlignedColumns.h"
#include "tools/kontodb/CommandLine.h"
#include "tools/kontodb/Commands.h"
#include "tools/kontodb/InputFile.h"
#include "tools/kontodb/ProtectedFile.h"
#include "tools/kontodb/Signals.h"

namespace kontodb {
namespace {

constexpr std::size_t kMostBytesOfALine = std::size_t{1} << 20U;

std::string contentOf(const base::Text& path) {
    std::ifstream file = openInput(path);
    std::string content{std::istreambuf_iterator<char>(file), {}};
    if (file.bad()) throw jet::accessDenied(path);  // a folder, which opens and cannot be read
    return content;
}

std::string standardInput(const CommandLine& line, Console& console) {
    if (line.option(kPasswordFileOption) == base::Text(kStandardInput))
        throw UsageError(u"Aus der Standardeingabe kommen entweder die Konten oder das Kennwort.");
    std::string content;
    for (std::string part = console.readLine(kMostBytesOfALine); !part.empty();
         part = console.readLine(kMostBytesOfALine))
        content += part;
    return content;
}

std::string numberOfAccounts(std::size_t count) {
    return std::to_string(count) + (count == 1 ? " Konto" : " Konten");
}

/// @return whether there were none
bool reportFaults(const std::vector<ImportFault>& faults, Console& console) {
    for (const ImportFault& fault : faults)
        console.printError("Zeile " + std::to_string(fault.line) + ": " + withoutControls(base::toUtf8(fault.reason)) +
                           "\n");
    if (faults.empty()) return true;
    const std::string count = faults.size() == 1 ? "1 Zeile ist" : std::to_string(faults.size()) + " Zeilen sind";
    console.printError(count + " falsch; nichts wurde geschrieben.\n");
    return false;
}

}  // namespace

int import(std::span<const base::Text> arguments, Console& console) {
    const CommandLine line(arguments, {kPasswordOption, kPasswordFileOption}, {kDryRunFlag});
    line.requireOperands({u"DATEI", u"CSV"});
    const base::Text& source = line.operand(1);
    const AccountImport accounts(readCsv(source == kStandardInput ? standardInput(line, console) : contentOf(source)));
    const bool isDryRun = line.flag(kDryRunFlag);
    const auto leftJournal = isDryRun ? jet::LeftJournalRule::Refuse : jet::LeftJournalRule::RollBack;
    jet::Database database = openProtected(line.operand(0), line, console, leftJournal);

    const Interruption interruption;
    jet::Transaction transaction(database);
    jet::TableWriter writer(transaction, tolv::accountTable::kTable);
    if (!reportFaults(accounts.faults(writer.table()), console)) return kExitError;
    accounts.insert(writer, console);
    const std::string count = numberOfAccounts(accounts.count());
    if (isDryRun) {
        console.print(count + " ohne Fehler\n");
        console.printError("Probelauf: Die Datei ist unverändert.\n");
        return kExitSuccess;
    }
    transaction.commit();
    console.printDone(
        count + " angelegt. Das Initialpasswort ist " + base::toUtf8(tolv::accountTable::kInitialPassword) + ".\n",
        u"Die Konten sind trotzdem angelegt.");
    return kExitSuccess;
}

}  // namespace kontodb
