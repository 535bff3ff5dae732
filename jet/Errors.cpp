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

constexpr TextView kDamage = u"Die Datenbank ist beschädigt, ";

}  // namespace

Text quoted(TextView name) {
    return u"'" + Text(name) + u"'";
}

RuntimeError failure(Text description) {
    return error(ErrorNumber::Unspecified, std::move(description));
}

RuntimeError fileNotFound(TextView path) {
    return failure(u"Datei " + quoted(path) + u" nicht gefunden.");
}

RuntimeError folderNotFound(TextView path) {
    return failure(quoted(path) +
                   u" ist kein zulässiger Pfad. Stellen Sie sicher, dass der Pfad richtig eingegeben wurde und dass "
                   u"Sie mit dem Server, auf dem sich die Datei befindet, verbunden sind.");
}

RuntimeError fileExists(TextView path) {
    constexpr std::int32_t kFileAlreadyExists = 58;
    return {kFileAlreadyExists, u"Die Datei " + quoted(path) + u" existiert bereits."};
}

RuntimeError fileInUse(TextView path) {
    return failure(quoted(path) + u" konnte nicht verwendet werden; Datei wird bereits benutzt.");
}

RuntimeError accessDenied(TextView path) {
    return failure(u"Das Datenbankmodul kann die Datei " + quoted(path) +
                   u" nicht öffnen. Sie ist bereits von einem anderen Benutzer exklusiv geöffnet, oder Sie benötigen "
                   u"eine Berechtigung, um ihre Daten zu lesen.");
}

RuntimeError unknownFormat(TextView path) {
    return failure(u"Nicht erkennbares Datenbankformat " + quoted(path) + u".");
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

WriteRefused lockedByUser(TextView path, TextView user, TextView computer) {
    const Text holder = user.empty() && computer.empty()
                            ? u"einen anderen Benutzer der Datei " + quoted(path)
                            : u"Benutzer " + quoted(user) + u" auf Computer " + quoted(computer);
    return {WriteRefused::Reason::InUse, ErrorNumber::Unspecified,
            u"Aktualisieren nicht möglich; derzeit gesperrt durch " + holder + u"."};
}

WriteRefused readOnly() {
    return {WriteRefused::Reason::ReadOnly, ErrorNumber::Unspecified,
            u"Operation muss eine aktualisierbare Abfrage verwenden."};
}

RuntimeError fileTooLarge() {
    return failure(u"Ungültiges Argument.");
}

RuntimeError diskFull() {
    return failure(u"Nicht genügend Speicherplatz auf dem Datenträger.");
}

RuntimeError journalLeft(TextView path, TextView journalPath) {
    return failure(u"Die Datei " + quoted(path) +
                   u" ist vielleicht nur halb geschrieben: Ein Schreibvorgang wurde "
                   u"unterbrochen und hat das Journal " +
                   quoted(journalPath) +
                   u" hinterlassen. Öffnen Sie die Datei mit einem Programm, das schreiben darf; es stellt den Stand "
                   u"davor wieder her.");
}

RuntimeError journalRefused(TextView path, TextView journalPath, TextView why) {
    return failure(u"Die Datei " + quoted(path) + u" wird nicht geöffnet: Das Journal " + quoted(journalPath) + u" " +
                   Text(why) +
                   u". Nichts wurde geändert. Heben Sie beide auf, und kopieren Sie die Datei allein in einen anderen "
                   u"Ordner: \"kontodb check\" prüft diese Kopie, \"kontodb query\" zeigt, was darin steht. Auch ohne "
                   u"Fehler kann die letzte Änderung halb darin sein. Ist die Kopie in Ordnung, setzen Sie sie an die "
                   u"Stelle von Datei und Journal; sonst stellen Sie die Datei aus einer Sicherung wieder her.");
}

RuntimeError journalStays(TextView path, TextView journalPath) {
    return failure(u"Die Datei " + quoted(path) + u" wird nicht geöffnet: Das Journal " + quoted(journalPath) +
                   u" ist erledigt und die Datei ganz, aber das Journal kann nicht gelöscht "
                   u"werden. Löschen Sie es.");
}

RuntimeError deviceFailed(TextView path, std::int64_t systemError) {
    return failure(u"Fehler beim Zugriff auf die Datei " + quoted(path) + u" (Systemfehler " +
                   base::decimal(systemError) + u").");
}

RuntimeError damaged(PageNumber page, TextView found) {
    return failure(Text(kDamage) + u"Seite " + base::decimal(page) + u": " + Text(found) + u".");
}

RuntimeError damagedRow(RowPointer row, TextView found) {
    return failure(Text(kDamage) + u"Seite " + base::decimal(row.page) + u", Zeile " + base::decimal(row.slot) + u": " +
                   Text(found) + u".");
}

std::optional<Text> damageOf(const RuntimeError& error) {
    const Text& description = error.description();
    if (!description.starts_with(kDamage)) return std::nullopt;
    return description.substr(kDamage.size());
}

}  // namespace jet
