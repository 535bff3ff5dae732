#include "jet/WriteErrors.h"

#include "jet/Errors.h"

namespace jet {
namespace {

base::RuntimeError failure(base::Text description) {
    return {static_cast<std::int32_t>(ErrorNumber::Unspecified), std::move(description)};
}

base::Text indexNamed(base::TextView index) {
    return u"Index '" + base::Text(index) + u"'";
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
    return failure(u"Der Wert ist zu lang für den " + indexNamed(index) + u".");
}

base::RuntimeError nullInIndex() {
    return failure(u"Der Index oder Primärschlüssel kann keinen Nullwert enthalten.");
}

base::RuntimeError uncertainKey(base::TextView index) {
    return failure(
        u"Der " + indexNamed(index) +
        u" kann den Text nicht aufnehmen: Sein Platz in der Sortierfolge der Datei ist nicht sicher bekannt.");
}

base::RuntimeError foreignKeys(base::TextView index) {
    return failure(u"Der " + indexNamed(index) +
                   u" ist nach einer anderen Sortierfolge aufgebaut. Die Tabelle kann nur gelesen werden.");
}

}  // namespace jet
