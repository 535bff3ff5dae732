#include "tools/kontodb/ProtectedFile.h"

#include <fstream>
#include <optional>
#include <string>
#include <utility>

#include "base/RuntimeError.h"
#include "jet/Errors.h"
#include "jet/storage/Storage.h"
#include "tools/kontodb/InputFile.h"

namespace kontodb {

namespace {

constexpr base::TextView kPrompt = u"Datenbankkennwort: ";
constexpr base::TextView kNewPrompt = u"Kennwort der neuen Datei (ohne Eingabe: das der Benutzerkontenverwaltung): ";
constexpr base::TextView kAgainPrompt = u"Noch einmal: ";

/// Longer than any password in UTF-8; a file of another kind is not read whole for a line that it has not.
constexpr std::size_t kMaxLineBytes = 1024;

/// Without the marks of a text file.
base::Text passwordIn(std::string line) {
    if (line.starts_with("\xEF\xBB\xBF")) line.erase(0, 3);
    if (!line.empty() && line.back() == '\n') line.pop_back();
    if (!line.empty() && line.back() == '\r') line.pop_back();
    return base::fromUtf8(line);
}

base::Text firstLineOf(const base::Text& path) {
    std::ifstream file = openInput(path);
    std::string line;
    for (char unit = 0; line.size() < kMaxLineBytes && file.get(unit) && unit != '\n';)
        line += unit;
    if (file.bad()) throw jet::accessDenied(path);  // a folder, which opens and cannot be read
    return passwordIn(std::move(line));
}

base::Text firstLineOfInput(Console& console) {
    if (auto typed = console.askPassword(kPrompt)) return *std::move(typed);
    std::string line = console.readLine(kMaxLineBytes);
    if (line.empty()) throw UsageError(u"Für --password-file - fehlt das Kennwort in der Standardeingabe.");
    return passwordIn(std::move(line));
}

jet::Database open(const base::Text& path, base::TextView password, jet::LeftJournalRule rule) {
    return jet::Database::open(jet::fileStorage(path), password, rule);
}

/// @return nothing if there is no terminal to ask at
std::optional<base::Text> askTwice(Console& console) {
    auto password = console.askPassword(kNewPrompt);
    if (password && !password->empty() && console.askPassword(kAgainPrompt) != password)
        throw jet::failure(u"Die beiden Eingaben sind verschieden. Es ist keine Datei entstanden.");
    return password;
}

}  // namespace

std::optional<base::Text> givenPassword(const CommandLine& line, Console& console) {
    auto password = line.option(kPasswordOption);
    const auto file = line.option(kPasswordFileOption);
    if (password && file) throw UsageError(u"--password und --password-file schließen einander aus.");
    if (!file) return password;
    return *file == kStandardInput ? firstLineOfInput(console) : firstLineOf(*file);
}

std::optional<base::Text> askForPassword(Console& console) {
    return console.askPassword(kPrompt);
}

jet::Database openProtected(const base::Text& path, const CommandLine& line, Console& console,
                            jet::LeftJournalRule rule) {
    const auto password = givenPassword(line, console);
    if (password) return open(path, *password, rule);
    try {
        return open(path, {}, rule);
    } catch (const base::RuntimeError& error) {
        if (error.number() != static_cast<std::int32_t>(jet::ErrorNumber::WrongPassword)) throw;
        const auto typed = askForPassword(console);
        if (!typed) throw;
        return open(path, *typed, rule);
    }
}

std::optional<base::Text> newPassword(const CommandLine& line, Console& console) {
    const bool isTyped = line.option(kPasswordFileOption).value_or(base::Text(kStandardInput)) == kStandardInput;
    std::optional<base::Text> password;
    if (isTyped && !line.option(kPasswordOption)) password = askTwice(console);
    if (!password) return givenPassword(line, console);
    return password->empty() ? std::nullopt : password;
}

}  // namespace kontodb
