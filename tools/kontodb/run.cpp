#include <algorithm>
#include <csignal>
#include <iterator>
#include <new>
#include <string>
#include <vector>

#include "base/RuntimeError.h"
#include "jet/Errors.h"
#include "tools/kontodb/AccessHint.h"
#include "tools/kontodb/CommandLine.h"
#include "tools/kontodb/Commands.h"
#include "tools/kontodb/ExplainedError.h"
#include "tools/kontodb/Help.h"
#include "tools/kontodb/Signals.h"
#include "tools/kontodb/Suggestion.h"

namespace kontodb {
namespace {

constexpr int kInvalidCall = 5;
constexpr int kOutOfMemory = 7;

using Command = int (*)(std::span<const base::Text>, Console&);

struct NamedCommand {
    base::TextView name;
    Command run;
};

int help(std::span<const base::Text> arguments, Console& console);

constexpr NamedCommand kCommands[] = {
    {u"create", create},   {u"check", check},   {u"tables", tables}, {u"schema", schema},
    {u"query", query},     {u"exec", exec},     {u"import", import}, {u"backup", backup},
    {u"compact", compact}, {u"repair", repair}, {u"help", help},
};

std::vector<base::TextView> names(std::initializer_list<base::TextView> further) {
    std::vector<base::TextView> names(further);
    for (const NamedCommand& command : kCommands)
        names.push_back(command.name);
    return names;
}

int help(std::span<const base::Text> arguments, Console& console) {
    const CommandLine line(arguments, {});
    line.requireOperands({u"BEFEHL"}, 1);
    const base::Text topic = line.count() == 0 ? u"help" : line.operand(0);
    const std::string_view text = topic == u"help" ? overview() : helpOn(topic);
    if (text.empty())
        throw UsageError(u"Zu '" + topic + u"' gibt es keine Hilfe." + suggestion(topic, names({u"sql"})));
    console.print(text);
    return kExitSuccess;
}

/// @return null if there is none of this name
const NamedCommand* commandNamed(base::TextView name) {
    const auto* const found = std::ranges::find(kCommands, name, &NamedCommand::name);
    return found == std::end(kCommands) ? nullptr : found;
}

int runCommand(std::span<const base::Text> arguments, Console& console) {
    if (arguments.empty()) throw UsageError(u"Es fehlt der Befehl.");
    const base::Text& name = arguments[0];
    if (isHelp(name)) return help({}, console);
    if (name == u"--version") {
        console.print("kontodb " KONTODB_VERSION "\n");
        return kExitSuccess;
    }
    const NamedCommand* const command = commandNamed(name);
    if (command == nullptr) {
        throw UsageError(u"Unbekannter Befehl '" + name + u"'." + suggestion(name, names({u"--help", u"--version"})));
    }
    try {
        return command->run(arguments.subspan(1), console);
    } catch (const HelpWanted&) {
        return help(arguments.first(1), console);
    }
}

/// Where the arguments are explained.
std::string helpCall(std::span<const base::Text> arguments) {
    const bool isKnown = !arguments.empty() && !helpOn(arguments[0]).empty();
    return isKnown ? "kontodb help " + base::toUtf8(arguments[0]) : "kontodb help";
}

void printFailure(Console& console, int number, const std::string& description) {
    console.printError("kontodb: " + std::to_string(number) + ": " + description + "\n");
}

}  // namespace

int run(std::span<const base::Text> arguments, Console& console) {
    failBeyondLimits();
    try {
        const int exitCode = runCommand(arguments, console);
        console.flush();
        return exitCode;
    } catch (const Interrupted& interrupted) {
        std::raise(interrupted.signal);
    } catch (const UsageError& error) {
        printFailure(console, kInvalidCall, error.what());
        console.printError("Aufruf und Optionen zeigt: " + helpCall(arguments) + "\n");
    } catch (const base::RuntimeError& error) {
        printFailure(console, error.number(), base::toUtf8(error.description()));
        hintAtAccess(error, arguments.subspan(1), console);
        if (error.number() == static_cast<std::int32_t>(jet::ErrorNumber::MissingTable))
            console.printError("Die Tabellen einer Datei nennt: kontodb tables DATEI\n");
        if (const auto* explained = dynamic_cast<const ExplainedError*>(&error))
            console.printError(explained->explanation());
    } catch (const std::bad_alloc&) {
        printFailure(console, kOutOfMemory, "Nicht genügend Arbeitsspeicher.");
    }
    return kExitError;
}

}  // namespace kontodb
