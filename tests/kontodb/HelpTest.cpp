#include "tests/kontodb/Command.h"

namespace kontodb {
namespace {

using Help = Command;

TEST_F(Help, SaysHowToCallTheProgram) {
    const struct {
        std::vector<Text> arguments;
        std::string printed;  ///< a part of it; empty for an error
        std::string errors;   ///< a part of it
    } cases[] = {
        {{u"--version"}, "kontodb 1.", ""},
        {{u"help"}, "kontodb query DATEI", ""},
        {{u"-h"}, "kontodb query DATEI", ""},
        {{u"help", u"query"}, "ORDER BY BenKTO_Name", ""},
        {{u"query", u"--help"}, "ORDER BY BenKTO_Name", ""},
        {{u"exec", u"x.mdb", u"-h"}, "ganz oder gar nicht", ""},
        {{u"help", u"sql"}, "% für beliebig viele Zeichen", ""},
        {{u"help", u"chek"}, "", "Zu 'chek' gibt es keine Hilfe. Meinten Sie 'check'?"},
        {{}, "", "Es fehlt der Befehl.\nAufruf und Optionen zeigt: kontodb help\n"},
        {{u"qeury"}, "", "Unbekannter Befehl 'qeury'. Meinten Sie 'query'?\n"},
        {{u"--versoin"}, "", "Meinten Sie '--version'?"},
        {{u"löschen"}, "", "Unbekannter Befehl 'löschen'.\n"},
        {{u"query"}, "", "Es fehlt das Argument DATEI.\nAufruf und Optionen zeigt: kontodb help query\n"},
        {{u"check", u"a.mdb", u"--Note"}, "", "Unbekannte Option --Note. Meinten Sie '--notes'?"},
        {{u"check", u"a.mdb", u"--xyz"}, "", "Unbekannte Option --xyz.\n"},
        {{u"check", u"a.mdb", u"b"}, "", "Überzähliges Argument 'b'."},
    };
    for (const auto& [arguments, printed, errors] : cases) {
        const Outcome outcome = call(arguments);
        EXPECT_EQ(outcome.exitCode, printed.empty() ? kExitError : kExitSuccess);
        EXPECT_NE(outcome.printed.find(printed), std::string::npos) << outcome.printed;
        EXPECT_NE(outcome.errors.find(errors), std::string::npos) << outcome.errors << "\nwanted: " << errors;
    }
}

}  // namespace
}  // namespace kontodb
