#include <string>

#include "app/mPublic.h"
#include "jet/storage/NewFile.h"
#include "tools/kontodb/AccountFile.h"
#include "tools/kontodb/CommandLine.h"
#include "tools/kontodb/Commands.h"
#include "tools/kontodb/InterruptibleIo.h"
#include "tools/kontodb/Signals.h"

namespace kontodb {
namespace {

constexpr std::uint64_t kMostAccounts = 1'000'000;
constexpr std::uint64_t kLargestSeed = ~std::uint64_t{0};

void make(const base::Text& path, const base::Text& password, std::uint32_t accounts, std::uint64_t seed) {
    const Interruption interruption;
    jet::NewFile file(path);
    InterruptibleIo io(file.io());
    writeAccountFile(io, password, accounts, seed);
    Interruption::check();
    file.publish();
}

}  // namespace

int create(std::span<const base::Text> arguments, Console& console) {
    const CommandLine line(arguments, {u"--password", u"--accounts", u"--seed"});
    line.requireOperands({u"DATEI"});
    const base::Text password = line.option(u"--password").value_or(base::Text(tolv::kAdministratorPassword));
    const auto accounts = static_cast<std::uint32_t>(line.number(u"--accounts", 0, kMostAccounts));
    const std::uint64_t seed = line.number(u"--seed", 1, kLargestSeed);

    make(line.operand(0), password, accounts, seed);
    console.printDone(
        base::toUtf8(line.operand(0)) + ": " + std::to_string(accounts) + (accounts == 1 ? " Konto\n" : " Konten\n"),
        u"Die Datei '" + line.operand(0) + u"' ist trotzdem angelegt.");
    return kExitSuccess;
}

}  // namespace kontodb
