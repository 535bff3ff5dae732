#include "jet/WriteErrors.h"

#include "jet/Errors.h"

namespace jet {
namespace {

using Reason = WriteRefused::Reason;

WriteRefused violation(base::Text description) {
    return {Reason::RuleViolated, ErrorNumber::Unspecified, std::move(description)};
}

}  // namespace

base::RuntimeError duplicateKey() {
    return failure(
        u"Die von Ihnen vorgenommenen Änderungen an der Tabelle konnten nicht vorgenommen werden, da der Index, "
        u"Primärschlüssel oder die Beziehung mehrfach vorkommende Werte enthalten würde. Ändern Sie die Daten in den "
        u"Feldern, die gleiche Daten enthalten, entfernen Sie den Index, oder definieren Sie den Index neu, damit "
        u"doppelte Einträge möglich sind, und versuchen Sie es erneut.");
}

base::RuntimeError rowTooLong() {
    return failure(u"Der Datensatz ist zu groß.");
}

base::RuntimeError keyTooLong(base::TextView index) {
    return failure(u"Der Wert ist zu lang für den Index " + quoted(index) + u".");
}

base::RuntimeError nullInIndex() {
    return failure(u"Der Index oder Primärschlüssel kann keinen Nullwert enthalten.");
}

base::RuntimeError uncertainKey(base::TextView index) {
    return failure(
        u"Der Index " + quoted(index) +
        u" kann den Text nicht aufnehmen: Sein Platz in der Sortierfolge der Datei ist nicht sicher bekannt.");
}

base::RuntimeError foreignKeys(base::TextView index) {
    return failure(u"Der Index " + quoted(index) +
                   u" ist nach einer anderen Sortierfolge aufgebaut. Die Tabelle kann nur gelesen werden.");
}

WriteRefused valueTooLong() {
    return {Reason::ValueDoesNotFit, ErrorNumber::FieldTooSmall,
            u"Das Feld ist zu klein für die Datenmenge, die Sie hinzufügen wollten. Versuchen Sie, weniger Daten "
            u"einzufügen."};
}

WriteRefused valueOfOtherType() {
    return {Reason::ValueDoesNotFit, ErrorNumber::TypeMismatch, u"Datentypenkonflikt in Kriterienausdruck."};
}

WriteRefused nullNotAllowed(base::TextView column) {
    return violation(u"Das Feld " + quoted(column) +
                     u" kann keinen Nullwert enthalten, da die Required-Eigenschaft für dieses Feld auf True "
                     u"gesetzt ist. Geben Sie einen Wert in dieses Feld ein.");
}

WriteRefused emptyTextNotAllowed(base::TextView column) {
    return violation(u"Feld " + quoted(column) + u" kann keine leere Zeichenfolge sein.");
}

WriteRefused columnNotUpdatable(base::TextView column) {
    return violation(u"Das Feld " + quoted(column) + u" kann nicht aktualisiert werden.");
}

WriteRefused ruleViolated(base::TextView text, base::TextView rule, base::TextView owner) {
    if (!text.empty()) return violation(base::Text(text));
    return violation(u"Ein oder mehrere Werte verstoßen gegen die Gültigkeitsregel " + quoted(rule) + u" für " +
                     quoted(owner) + u". Geben Sie einen Wert ein, den der Ausdruck für dieses Feld akzeptieren kann.");
}

base::RuntimeError autoNumbersUsedUp() {
    return failure(u"Die fortlaufenden Nummern der Tabelle sind aufgebraucht.");
}

base::RuntimeError rowChanged() {
    return {static_cast<std::int32_t>(ErrorNumber::RowChanged),
            u"Das Microsoft Jet-Datenbankmodul hat den Vorgang angehalten, da Sie und ein weiterer Benutzer "
            u"gleichzeitig versuchen, dieselben Daten zu verändern."};
}

base::RuntimeError rowDeleted() {
    return {static_cast<std::int32_t>(ErrorNumber::RowDeleted), u"Der Datensatz wurde gelöscht."};
}

base::RuntimeError relatedRowsExist(base::TextView table) {
    return failure(u"Der Datensatz kann nicht gelöscht oder geändert werden, da die Tabelle " + quoted(table) +
                   u" in Beziehung stehende Datensätze enthält.");
}

base::RuntimeError relatedRowMissing(base::TextView table) {
    return failure(u"Der Datensatz kann nicht hinzugefügt oder geändert werden, da ein Datensatz in der Tabelle " +
                   quoted(table) + u" mit diesem Datensatz in Beziehung stehen muss.");
}

base::RuntimeError tableNotWritable(base::TextView table, base::TextView what) {
    return failure(u"Die Tabelle " + quoted(table) + u" kann nicht geschrieben werden: " + base::Text(what) + u".");
}

}  // namespace jet
