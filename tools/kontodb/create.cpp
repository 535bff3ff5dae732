#include <filesystem>
#include <string>

#include "app/mPublic.h"
#include "jet/Errors.h"
#include "jet/storage/NewFile.h"
#include "tools/kontodb/AccountFile.h"
#include "tools/kontodb/CommandLine.h"
#include "tools/kontodb/Commands.h"
#include "tools/kontodb/InterruptibleIo.h"
#include "tools/kontodb/Progress.h"
#include "tools/kontodb/ProtectedFile.h"
#include "tools/kontodb/Signals.h"

namespace kontodb {
namespace {

constexpr std::uint64_t kMostAccounts = 1'000'000;
constexpr std::uint64_t kLargestSeed = ~std::uint64_t{0};

void make(const base::Text& path, const base::Text& password, std::uint32_t accounts, std::uint64_t seed,
          Console& console) {
    const Interruption interruption;
    jet::NewFile file(path);
    InterruptibleIo io(file.io());
    Progress progress(console, "Die Konten werden angelegt");
    writeAccountFile(io, password, accounts, seed, [&](std::uint32_t made) { progress.at(made, accounts); });
    Interruption::check();
    file.publish();
}

}  // namespace

int create(std::span<const base::Text> arguments, Console& console) {
    const CommandLine line(arguments, {kPasswordOption, kPasswordFileOption, u"--accounts", u"--seed"});
    line.requireOperands({u"DATEI"});
    const auto accounts = static_cast<std::uint32_t>(line.number(u"--accounts", 0, kMostAccounts));
    const std::uint64_t seed = line.number(u"--seed", 1, kLargestSeed);
    // Checked before the user types a password; make() checks it again.
    if (std::filesystem::exists(std::filesystem::path(line.operand(0)))) throw jet::fileExists(line.operand(0));
    const base::Text password = newPassword(line, console).value_or(base::Text(tolv::kAdministratorPassword));

    make(line.operand(0), password, accounts, seed, console);
    console.printDone(
        base::toUtf8(line.operand(0)) + ": " + std::to_string(accounts) + (accounts == 1 ? " Konto\n" : " Konten\n"),
        u"Die Datei '" + line.operand(0) + u"' ist trotzdem angelegt.");
    return kExitSuccess;
}

}  // namespace kontodb
