#include <memory>
#include <string>
#include <utility>

#include "jet/Errors.h"
#include "jet/check/Checker.h"
#include "jet/compact/Compactor.h"
#include "jet/compact/Comparison.h"
#include "tools/kontodb/CommandLine.h"
#include "tools/kontodb/Commands.h"
#include "tools/kontodb/InterruptibleIo.h"
#include "tools/kontodb/PrivateFile.h"
#include "tools/kontodb/ProtectedFile.h"
#include "tools/kontodb/Signals.h"
#include "tools/kontodb/WatchedPages.h"

namespace kontodb {
namespace {

struct Sizes {
    std::uint64_t original = 0;
    std::uint64_t copy = 0;
};

void requireSame(jet::ReadOperation& original, jet::ReadOperation& copy, Console& console) {
    Progress progress(console, "Beide Dateien werden verglichen");
    WatchedPages pages(copy, progress);
    jet::requireSameContents(original, original.header(), pages, copy.header());
}

void requireSound(jet::ReadOperation& copy, Console& console) {
    Progress progress(console, "Die neue Datei wird geprüft");
    WatchedPages pages(copy, progress);
    const jet::CheckResult result = jet::checkDatabase(pages, copy.sizeBytes());
    if (result.isSound()) return;
    throw jet::failure(
        u"Die Datei hat Fehler, die in die neue kämen, und wird nicht verkleinert. Alle nennt kontodb check; "
        u"kontodb repair rettet, was lesbar ist. In der neuen Datei stünde: " +
        result.findings.kept().front().line());
}

void writeCompacted(const jet::Compactor& compactor, std::uint64_t originalBytes, jet::PageIo& io, Console& console) {
    Progress progress(console, "Die neue Datei wird geschrieben");
    InterruptibleIo watched(io, progress, originalBytes);
    compactor.writeTo(watched);
}

/// The new file gets its name only after all of it was compared with the original.
Sizes compactFile(jet::Database& database, const base::Text& target, Console& console) {
    const Interruption interruption;
    auto original = database.beginRead();
    const jet::Compactor compactor(original, original.header());
    const auto file = newPrivateFile(target);
    Sizes sizes;
    {
        writeCompacted(compactor, original.sizeBytes(), file->io(), console);
        auto written =
            jet::Database::open(std::make_unique<InterruptibleIo>(file->io()), target, original.header().password);
        auto copy = written.beginRead();
        requireSame(original, copy, console);
        requireSound(copy, console);
        sizes = {original.sizeBytes(), copy.sizeBytes()};
    }
    Interruption::check();
    file->publish();
    shareLike(database.path(), target);
    return sizes;
}

std::string kilobytes(std::uint64_t bytes) {
    constexpr std::uint64_t kBytes = 1024;
    return std::to_string((bytes + kBytes - 1) / kBytes) + " KB";
}

}  // namespace

int compact(std::span<const base::Text> arguments, Console& console) {
    const CommandLine line(arguments, {kPasswordOption, kPasswordFileOption});
    line.requireOperands({u"DATEI", u"ZIEL"});
    const base::Text& target = line.operand(1);
    jet::Database database = openProtected(line.operand(0), line, console);
    warnOfOriginalUser(line.operand(0), u"verkleinert", console);
    const Sizes sizes = compactFile(database, target, console);
    console.printDone(base::toUtf8(target) + ": " + kilobytes(sizes.copy) + " statt " + kilobytes(sizes.original) +
                          ", verglichen und geprüft\n",
                      u"Die Datei '" + target + u"' ist trotzdem angelegt.");
    return kExitSuccess;
}

}  // namespace kontodb
