#include <csignal>
#include <new>
#include <string>

#include "base/RuntimeError.h"
#include "tools/kontodb/CommandLine.h"
#include "tools/kontodb/Commands.h"
#include "tools/kontodb/Signals.h"

namespace kontodb {
namespace {

constexpr char kUsage[] =
    R"(kontodb - Kontendateien der Tolv-Benutzerkontenverwaltung

Aufruf:
  kontodb create DATEI [--password KENNWORT] [--accounts N] [--seed S]
      legt eine neue Kontendatei mit N erfundenen Konten an (ohne Angabe: keinen).
      Gleiches S ergibt die gleiche Datei. Geschützt wird sie mit dem eigenen
      Datenbankkennwort des Programms oder dem angegebenen; --password "" legt
      sie ohne Kennwort an. Eine Datei, die es schon gibt, bleibt unberührt.
      Ihren Namen bekommt die Datei erst, wenn sie ganz ist; wird das Programm
      vorher abgeschossen, bleibt höchstens DATEI-neu-1, die Sie löschen können.
  kontodb check DATEI [--notes] [--password KENNWORT | --password-file DATEI]
      prüft die ganze Datei und nennt jeden Fehler in einer Zeile; eine Datei ohne
      Fehler bekommt eine Zeile. --notes zeigt auch, was auffällt und nicht schadet.
  kontodb query DATEI "SELECT ..." [--json] [--password KENNWORT | --password-file DATEI]
      gibt die Zeilen aus: durch Tabulatoren getrennt mit einer Kopfzeile, null
      als \N, ja/nein als -1/0; mit --json ein Objekt je Zeile. Was kein gültiges
      Zeichen ist, wird zu U+FFFD. Ist ein Wert beschädigt, endet die Ausgabe vor
      seiner Zeile und das Ergebnis ist 2; die Zeilen davor gelten.
  kontodb exec DATEI "UPDATE|DELETE|INSERT ..." [--password KENNWORT | --password-file DATEI]
      führt die Anweisung aus, ganz oder gar nicht, und gibt die Zahl der Zeilen aus,
      die sie geändert, gelöscht oder eingefügt hat. Was ein unterbrochener
      Schreibvorgang hinterlassen hat, wird vorher zurückgenommen.
  kontodb --help, kontodb -h
      zeigt diesen Text.

Was mit - beginnt, ist eine Option, außer hinter einem --.

Ergebnis: 0 Erfolg, 1 Befund, 2 Fehler.
)";

constexpr int kInvalidCall = 5;
constexpr int kOutOfMemory = 7;

int runCommand(std::span<const base::Text> arguments, Console& console) {
    if (arguments.empty()) throw UsageError(u"Es fehlt der Befehl.");
    const base::Text& command = arguments[0];
    const auto rest = arguments.subspan(1);
    if (isHelp(command)) throw HelpWanted{};
    if (command == u"create") return create(rest, console);
    if (command == u"check") return check(rest, console);
    if (command == u"exec") return exec(rest, console);
    if (command == u"query") return query(rest, console);
    throw UsageError(u"Unbekannter Befehl '" + command + u"'.");
}

int runOrHelp(std::span<const base::Text> arguments, Console& console) {
    try {
        return runCommand(arguments, console);
    } catch (const HelpWanted&) {
        console.print(kUsage);
        return kExitSuccess;
    }
}

void printFailure(Console& console, int number, const std::string& description) {
    console.printError("kontodb: " + std::to_string(number) + ": " + description + "\n");
}

}  // namespace

int run(std::span<const base::Text> arguments, Console& console) {
    failBeyondLimits();
    try {
        const int exitCode = runOrHelp(arguments, console);
        console.flush();
        return exitCode;
    } catch (const Interrupted& interrupted) {
        std::raise(interrupted.signal);
    } catch (const UsageError& error) {
        printFailure(console, kInvalidCall, error.what());
        console.printError("Aufruf und Optionen zeigt: kontodb --help\n");
    } catch (const base::RuntimeError& error) {
        printFailure(console, error.number(), base::toUtf8(error.description()));
    } catch (const std::bad_alloc&) {
        printFailure(console, kOutOfMemory, "Nicht genügend Arbeitsspeicher.");
    }
    return kExitError;
}

}  // namespace kontodb
