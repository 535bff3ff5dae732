#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "jet/check/Checker.h"
#include "jet/storage/Storage.h"
#include "tools/kontodb/CommandLine.h"
#include "tools/kontodb/Commands.h"
#include "tools/kontodb/InterruptibleIo.h"
#include "tools/kontodb/PrivateFile.h"
#include "tools/kontodb/ProtectedFile.h"
#include "tools/kontodb/Signals.h"
#include "tools/kontodb/WatchedPages.h"

namespace kontodb {
namespace {

constexpr std::uint64_t kBytesAtOnce = std::uint64_t{256} * 1024;

/// Byte by byte: the password, the encoding and what nobody knows of the format come along.
void copyBytes(jet::PageIo& from, std::uint64_t sizeBytes, jet::PageIo& to, Console& console) {
    Progress progress(console, "Die Datei wird kopiert");
    std::vector<std::uint8_t> bytes;
    for (std::uint64_t at = 0; at < sizeBytes; at += bytes.size()) {
        bytes.resize(static_cast<std::size_t>(std::min(kBytesAtOnce, sizeBytes - at)));
        from.read(at, bytes);
        to.write(at, bytes);
        progress.at(at, sizeBytes);
    }
}

std::size_t faultsIn(jet::PageIo& copy, const base::Text& path, const base::Text& password, Console& console) {
    jet::Database database = jet::Database::open(std::make_unique<InterruptibleIo>(copy), path, password);
    auto operation = database.beginRead();
    Progress progress(console, "Die Kopie wird geprüft");
    WatchedPages pages(operation, progress);
    return jet::checkDatabase(pages, operation.sizeBytes()).findings.faultCount();
}

/// @return the faults of the copy, which are those of the file
std::size_t copyFile(jet::Database& database, const base::Text& target, Console& console) {
    const Interruption interruption;
    const auto file = newPrivateFile(target);
    InterruptibleIo io(file->io());
    base::Text password;
    {
        const auto operation = database.beginRead();
        password = operation.header().password;
        copyBytes(*jet::openFile(database.path(), jet::OpenMode::Read), operation.sizeBytes(), io, console);
    }
    io.sync();
    const std::size_t faults = faultsIn(file->io(), target, password, console);
    Interruption::check();
    file->publish();
    shareLike(database.path(), target);
    return faults;
}

}  // namespace

int backup(std::span<const base::Text> arguments, Console& console) {
    const CommandLine line(arguments, {kPasswordOption, kPasswordFileOption});
    line.requireOperands({u"DATEI", u"ZIEL"});
    const base::Text& target = line.operand(1);
    jet::Database database = openProtected(line.operand(0), line, console);
    warnOfOriginalUser(line.operand(0), u"kopiert", console);
    const std::size_t faults = copyFile(database, target, console);
    if (faults > 0) {
        console.printDone("Fehler: '" + base::toUtf8(target) + "' ist eine genaue Kopie, und die Datei hat " +
                              std::to_string(faults) + " Fehler. Welche, zeigt: kontodb check DATEI\n",
                          u"Die Kopie '" + target + u"' ist trotzdem angelegt.");
        return kExitFaultsFound;
    }
    console.printDone(base::toUtf8(target) + ": gesichert und geprüft\n",
                      u"Die Kopie '" + target + u"' ist trotzdem angelegt.");
    return kExitSuccess;
}

}  // namespace kontodb
