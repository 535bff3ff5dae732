#include "ado/embedded/AdoError.h"

namespace ado::embedded {

namespace {

base::TextView descriptionOf(AdoErrorNumber number) {
    switch (number) {
        case AdoErrorNumber::InvalidArgument:
            return u"Die Argumente sind vom falschen Typ, liegen außerhalb des zulässigen Bereichs oder sind "
                   u"miteinander "
                   u"unvereinbar.";
        case AdoErrorNumber::NoCurrentRecord:
            return u"Entweder BOF oder EOF ist True, oder der aktuelle Datensatz wurde gelöscht. Der angeforderte "
                   u"Vorgang "
                   u"benötigt einen aktuellen Datensatz.";
        case AdoErrorNumber::IllegalOperation:
            return u"Der Vorgang ist in diesem Zusammenhang nicht zugelassen.";
        case AdoErrorNumber::FeatureNotAvailable:
            return u"Das aktuelle Recordset unterstützt keine Aktualisierung. Möglicherweise liegt dies am Provider "
                   u"oder "
                   u"an dem ausgewählten Sperrtyp.";
        case AdoErrorNumber::ItemNotFound:
            return u"Ein Objekt, das dem angeforderten Namen oder dem Ordinalverweis entspricht, kann nicht gefunden "
                   u"werden.";
        case AdoErrorNumber::ObjectClosed:
            return u"Der Vorgang ist für ein geschlossenes Objekt nicht zugelassen.";
        case AdoErrorNumber::ObjectOpen:
            return u"Der Vorgang ist für ein geöffnetes Objekt nicht zugelassen.";
        case AdoErrorNumber::ProviderNotFound:
            return u"Der Provider kann nicht gefunden werden. Er ist eventuell nicht richtig installiert.";
        case AdoErrorNumber::InvalidConnection:
            return u"Die Verbindung kann nicht verwendet werden, um diesen Vorgang auszuführen. Sie ist entweder "
                   u"geschlossen oder in diesem Zusammenhang unzulässig.";
    }
    return {};
}

}  // namespace

base::RuntimeError adoError(AdoErrorNumber number) {
    return {static_cast<std::int32_t>(number), base::Text(descriptionOf(number))};
}

base::RuntimeError recordsetError(const jet::WriteRefused& refused) {
    using Reason = jet::WriteRefused::Reason;
    if (refused.reason() == Reason::ReadOnly)
        return {static_cast<std::int32_t>(jet::ErrorNumber::ReadOnly),
                u"Aktualisieren nicht möglich. Datenbank oder Objekt ist schreibgeschützt."};
    constexpr auto kNotUpdated = static_cast<std::int32_t>(jet::ErrorNumber::NotUpdated);
    if (refused.reason() == Reason::ValueDoesNotFit)
        return {kNotUpdated,
                u"Fehler bei einer aus mehreren Schritten bestehenden OLE DB-Operation. Prüfen Sie die einzelnen "
                u"OLE DB-Statuswerte, falls vorhanden. Daten wurden nicht verarbeitet."};
    return {kNotUpdated, refused.description()};
}

base::RuntimeError invalidUser() {
    return {-2147217843, u"Kein zulässiger Kontoname oder falsches Kennwort."};
}

}  // namespace ado::embedded
