#include "jet/Errors.h"

#include <string>

namespace jet {
namespace {

using base::RuntimeError;
using base::Text;
using base::TextView;

RuntimeError error(ErrorNumber number, Text description) {
    return {static_cast<std::int32_t>(number), std::move(description)};
}

Text quoted(TextView text) {
    return u"'" + Text(text) + u"'";
}

}  // namespace

RuntimeError fileNotFound(TextView path) {
    return error(ErrorNumber::Unspecified, u"Datei " + quoted(path) + u" nicht gefunden.");
}

RuntimeError folderNotFound(TextView path) {
    return error(ErrorNumber::Unspecified,
                 quoted(path) +
                     u" ist kein zulässiger Pfad. Stellen Sie sicher, dass der Pfad richtig eingegeben wurde und dass "
                     u"Sie mit dem Server, auf dem sich die Datei befindet, verbunden sind.");
}

RuntimeError fileInUse(TextView path) {
    return error(ErrorNumber::Unspecified,
                 quoted(path) + u" konnte nicht verwendet werden; Datei wird bereits benutzt.");
}

RuntimeError accessDenied(TextView path) {
    return error(ErrorNumber::Unspecified,
                 u"Das Datenbankmodul kann die Datei " + quoted(path) +
                     u" nicht öffnen. Sie ist bereits von einem anderen Benutzer exklusiv geöffnet, oder Sie benötigen "
                     u"eine Berechtigung, um ihre Daten zu lesen.");
}

RuntimeError unknownFormat(TextView path) {
    return error(ErrorNumber::Unspecified, u"Nicht erkennbares Datenbankformat " + quoted(path) + u".");
}

RuntimeError wrongPassword() {
    return error(ErrorNumber::WrongPassword, u"Kein zulässiges Kennwort.");
}

RuntimeError tableNotFound(TextView name) {
    return error(ErrorNumber::MissingTable,
                 u"Das Microsoft Jet-Datenbankmodul findet die Eingabetabelle oder Abfrage " + quoted(name) +
                     u" nicht. Stellen Sie sicher, dass sie existiert und dass ihr Name "
                     u"richtig eingegeben wurde.");
}

RuntimeError deviceFailed(TextView path, std::int64_t systemError) {
    return error(ErrorNumber::Unspecified, u"Fehler beim Zugriff auf die Datei " + quoted(path) + u" (Systemfehler " +
                                               base::decimal(systemError) + u").");
}

RuntimeError damaged(PageNumber page, TextView found) {
    return error(ErrorNumber::Unspecified,
                 u"Die Datenbank ist beschädigt, Seite " + base::decimal(page) + u": " + Text(found) + u".");
}

RuntimeError damagedRow(RowPointer row, TextView found) {
    return error(ErrorNumber::Unspecified, u"Die Datenbank ist beschädigt, Seite " + base::decimal(row.page) +
                                               u", Zeile " + base::decimal(row.slot) + u": " + Text(found) + u".");
}

}  // namespace jet
