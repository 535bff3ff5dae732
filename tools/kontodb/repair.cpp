#include <memory>
#include <string>
#include <utility>

#include "jet/Errors.h"
#include "jet/check/Checker.h"
#include "jet/salvage/Rebuild.h"
#include "jet/storage/Storage.h"
#include "jet/transaction/Database.h"
#include "tools/kontodb/CommandLine.h"
#include "tools/kontodb/Commands.h"
#include "tools/kontodb/InterruptibleIo.h"
#include "tools/kontodb/PrivateFile.h"
#include "tools/kontodb/ProtectedFile.h"
#include "tools/kontodb/Signals.h"
#include "tools/kontodb/WatchedPages.h"

namespace kontodb {
namespace {

using jet::SalvageReport;

struct Counts {
    std::size_t whole = 0;
    std::size_t withLosses = 0;
    std::size_t lost = 0;

    void add(const SalvageReport::Table& table) {
        whole += table.wholeRows;
        withLosses += table.rowsWithLosses;
        lost += table.lostRows;
    }
};

base::Text textOf(const Counts& counts) {
    base::Text text = jet::countText(counts.whole, u"Datensatz ganz", u"Datensätze ganz");
    if (counts.withLosses > 0) text += u", " + base::decimal(counts.withLosses) + u" mit verlorenen Werten";
    if (counts.lost > 0) text += u", " + base::decimal(counts.lost) + u" verloren";
    return text;
}

void appendTable(const SalvageReport::Table& table, base::TextView title, base::Text& text) {
    text += title;
    text += u'\n';
    for (const base::Text& line : table.lines)
        text += u"  " + line + u'\n';
    if (table.furtherLines > 0)
        text += u"  ... und " + jet::countText(table.furtherLines, u"weitere Meldung\n", u"weitere Meldungen\n");
}

base::Text textOf(const SalvageReport& report) {
    Counts all;
    base::Text tables;
    for (const SalvageReport::Table& table : report.tables) {
        Counts own;
        own.add(table);
        all.add(table);
        appendTable(table, u"Tabelle '" + table.name + u"': " + textOf(own), tables);
    }
    all.add(report.file);
    if (!report.file.lines.empty()) appendTable(report.file, u"Was zu keiner Tabelle gehört:", tables);
    for (const base::Text& remark : report.remarks)
        tables += u"Hinweis: " + remark + u'\n';
    return jet::countText(report.tables.size(), u"Tabelle, ", u"Tabellen, ") + textOf(all) +
           (report.hasLosses() ? u"\n" : u", nichts verloren\n") + tables;
}

/// The file to be read, locked against writers of this engine.
class DamagedInput {
public:
    explicit DamagedInput(const base::Text& path) : io_(open(path)), interruptible_(*io_) {
        if (!io_->lock(jet::LockKind::Shared, jet::kLockWait)) throw jet::fileInUse(path);
    }
    ~DamagedInput() { io_->lock(jet::LockKind::None, {}); }
    DamagedInput(const DamagedInput&) = delete;
    DamagedInput& operator=(const DamagedInput&) = delete;

    jet::PageIo& io() { return interruptible_; }

private:
    /// What an interrupted writing left is no damage: its journal makes the file whole.
    static std::unique_ptr<jet::PageIo> open(const base::Text& path) {
        const auto storage = jet::fileStorage(path);
        auto io = storage->openForReading();
        if (storage->hasJournal()) throw jet::journalLeft(path, storage->journalPath());
        return io;
    }

    std::unique_ptr<jet::PageIo> io_;
    InterruptibleIo interruptible_;
};

jet::DamagedFile openDamaged(jet::PageIo& io, const base::Text& path, const CommandLine& line, Console& console) {
    if (const auto password = givenPassword(line, console)) return {io, path, *password};
    try {
        return {io, path, {}};
    } catch (const base::RuntimeError& error) {
        if (error.number() != static_cast<std::int32_t>(jet::ErrorNumber::WrongPassword)) throw;
        const auto typed = askForPassword(console);
        if (!typed) throw;
        return {io, path, *typed};
    }
}

SalvageReport writeFresh(jet::DamagedFile& damaged, std::uint64_t damagedBytes, jet::PageIo& io, Console& console) {
    Progress progress(console, "Die neue Datei wird geschrieben");
    InterruptibleIo watched(io, progress, damagedBytes);
    return jet::rebuild(damaged, watched);
}

/// A fault of the new file is a fault of this program. But the file is all that there is, so it is kept.
void checkCopy(jet::PageIo& io, const base::Text& path, const base::Text& password, SalvageReport& report,
               Console& console) {
    jet::Database database = jet::Database::open(std::make_unique<InterruptibleIo>(io), path, password);
    auto operation = database.beginRead();
    Progress progress(console, "Die neue Datei wird geprüft");
    WatchedPages pages(operation, progress);
    const jet::CheckResult result = jet::checkDatabase(pages, operation.sizeBytes());
    if (!result.isSound())
        report.file.lose(u"Die neue Datei hat selbst noch Fehler: " + result.findings.kept().front().line());
}

SalvageReport repairFile(const CommandLine& line, Console& console) {
    const base::Text& path = line.operand(0);
    const base::Text& target = line.operand(1);
    DamagedInput input(path);
    jet::DamagedFile damaged = openDamaged(input.io(), path, line, console);
    const Interruption interruption;
    const auto file = newPrivateFile(target);
    SalvageReport report = writeFresh(damaged, input.io().sizeBytes(), file->io(), console);
    checkCopy(file->io(), target, damaged.password(), report, console);
    Interruption::check();
    file->publish();
    shareLike(path, target);
    return report;
}

}  // namespace

int repair(std::span<const base::Text> arguments, Console& console) {
    const CommandLine line(arguments, {kPasswordOption, kPasswordFileOption});
    line.requireOperands({u"DATEI", u"ZIEL"});
    warnOfOriginalUser(line.operand(0), u"gerettet", console);
    const SalvageReport report = repairFile(line, console);
    console.printDone(base::toUtf8(line.operand(1) + u": " + textOf(report)),
                      u"Die Datei '" + line.operand(1) + u"' ist trotzdem angelegt.");
    return report.hasLosses() ? kExitFaultsFound : kExitSuccess;
}

}  // namespace kontodb
