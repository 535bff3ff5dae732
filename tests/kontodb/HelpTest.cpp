#include "tests/kontodb/Command.h"

namespace kontodb {
namespace {

using Help = Command;

TEST_F(Help, ShowsTheUsageAndWhatIsWrongInACall) {
    const std::pair<std::string, std::string> cases[] = {
        {"--version", "kontodb 1."},
        {"help", "kontodb query DATEI"},
        {"-h", "kontodb query DATEI"},
        {"help query", "ORDER BY BenKTO_Name"},
        {"query --help", "ORDER BY BenKTO_Name"},
        {"exec x.mdb -h", "ganz oder gar nicht"},
        {"help sql", "% für beliebig viele Zeichen"},
    };
    for (const auto& [call, printed] : cases)
        expect(std::string("\n$ ").append(call).append("\n…").append(printed).append("…\n"));

    const std::pair<std::string, std::string> wrong[] = {
        {"", "Es fehlt der Befehl.\n! Aufruf und Optionen zeigt: kontodb help\n"},
        {"qeury", "Unbekannter Befehl 'qeury'. Meinten Sie 'query'?\n! Aufruf und Optionen zeigt: kontodb help\n"},
        {"query", "Es fehlt das Argument DATEI.\n! Aufruf und Optionen zeigt: kontodb help query\n"},
        {"help chek", "Zu 'chek' gibt es keine Hilfe. Meinten Sie 'check'?\n…\n"},
        {"--versoin", "…Meinten Sie '--version'?\n…\n"},
        {"löschen", "Unbekannter Befehl 'löschen'.\n…\n"},
        {"check a.mdb --Note", "Unbekannte Option --Note. Meinten Sie '--notes'?\n…\n"},
        {"check a.mdb --xyz", "Unbekannte Option --xyz.\n…\n"},
        {"check a.mdb b", "Überzähliges Argument 'b'.\n…\n"},
        {"check a.mdb --notes=1", "Die Option --notes nimmt keinen Wert.\n…\n"},
        {"create a.mdb -s", "Unbekannte Option -s.\n…\n"},
        {"create a.mdb --acounts 3", "Unbekannte Option --acounts. Meinten Sie '--accounts'?\n…\n"},
        {"create a.mdb --accounts", "Zu --accounts fehlt der Wert.\n…\n"},
        {"create a.mdb --accounts 1000001", "--accounts verlangt eine ganze Zahl von 0 bis 1000000.\n…\n"},
        {"create a.mdb --accounts -1", "--accounts verlangt…\n"},
        {"create a.mdb --accounts 3x", "--accounts verlangt…\n"},
        {"create a.mdb --accounts=", "--accounts verlangt…\n"},
        {"create a.mdb --seed 18446744073709551616", "--seed verlangt…\n"},
        {"create a.mdb --seed 1 --seed 2", "Die Option --seed steht zweimal da.\n…\n"},
        {"query a.mdb", "Es fehlt das Argument ANWEISUNG.\n…\n"},
        {"query a.mdb x --bom", "Die Option --bom gibt es nur mit --csv.\n…\n"},
        {"query a.mdb x --json --null x", "Die Option --null passt nicht zu --json.\n…\n"},
        {"query a.mdb x --csv --separator ab", "--separator verlangt ein Zeichen…\n"},
        {"query a.mdb -", "In der Standardeingabe steht keine Anweisung.\n…\n"},
        {"query a.mdb - --password-file=-", "…entweder die Anweisung oder das Kennwort.\n…\n"},
        {"query a.mdb \"DELETE FROM x\"",
         "query zeigt Zeilen; UPDATE, DELETE und INSERT führt exec aus.\n! Aufruf und Optionen zeigt: kontodb help "
         "query\n"},
        {"exec a.mdb", "Es fehlt das Argument ANWEISUNG.\n…\n"},
        {"import a.mdb", "Es fehlt das Argument CSV.\n…\n"},
        {"compact a.mdb", "Es fehlt das Argument ZIEL.\n…\n"},
        {"repair a.mdb", "Es fehlt das Argument ZIEL.\n…\n"},
        {"exec a.mdb -", "Es ist keine Anweisung da.\n…\n"},
        {"exec a.mdb DELETE --file x", "Die Anweisung steht entweder…\n"},
        {"exec a.mdb \"SELECT * FROM x\"", "exec führt UPDATE, DELETE und INSERT aus; Zeilen zeigt query.\n…\n"},
        {"schema a.mdb --json --sql", "--json und --sql schließen einander aus.\n…\n"},
        {"tables a.mdb --password=a --password-file=b", "--password und --password-file schließen einander aus.\n…\n"},
        {"tables a.mdb --password-file -", "Für --password-file - fehlt das Kennwort in der Standardeingabe.\n…\n"},
    };
    for (const auto& [call, message] : wrong)
        expect(std::string("\n$ ").append(call).append("\n! kontodb: 5: ").append(message));
    expect("\n$ create a.mdb --seed 18446744073709551615\na.mdb: 0 Konten\n");
}

}  // namespace
}  // namespace kontodb
