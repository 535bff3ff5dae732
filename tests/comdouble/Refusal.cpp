#include "tests/comdouble/Refusal.h"

namespace comdouble {

namespace {

base::TextView descriptionOf(AdoNumber number) {
    switch (number) {
        case AdoNumber::InvalidArgument:
            return u"Die Argumente sind vom falschen Typ, liegen außerhalb des zulässigen Bereichs oder sind "
                   u"miteinander unvereinbar.";
        case AdoNumber::NoCurrentRecord:
            return u"Entweder BOF oder EOF ist True, oder der aktuelle Datensatz wurde gelöscht. Der angeforderte "
                   u"Vorgang benötigt einen aktuellen Datensatz.";
        case AdoNumber::IllegalOperation:
            return u"Der Vorgang ist in diesem Zusammenhang nicht zugelassen.";
        case AdoNumber::FeatureNotAvailable:
            return u"Das aktuelle Recordset unterstützt keine Aktualisierung. Möglicherweise liegt dies am Provider "
                   u"oder an dem ausgewählten Sperrtyp.";
        case AdoNumber::ItemNotFound:
            return u"Ein Objekt, das dem angeforderten Namen oder dem Ordinalverweis entspricht, kann nicht gefunden "
                   u"werden.";
        case AdoNumber::DataConversion:
            return u"Die Anwendung verwendet einen Wert mit falschem Typ für die aktuelle Operation.";
        case AdoNumber::ObjectClosed:
            return u"Der Vorgang ist für ein geschlossenes Objekt nicht zugelassen.";
        case AdoNumber::ObjectOpen:
            return u"Der Vorgang ist für ein geöffnetes Objekt nicht zugelassen.";
        case AdoNumber::ProviderNotFound:
            return u"Der Provider kann nicht gefunden werden. Er ist eventuell nicht richtig installiert.";
        case AdoNumber::InvalidConnection:
            return u"Die Verbindung kann nicht verwendet werden, um diesen Vorgang auszuführen. Sie ist entweder "
                   u"geschlossen oder in diesem Zusammenhang unzulässig.";
    }
    return {};
}

}  // namespace

base::RuntimeError adoError(AdoNumber number) {
    return {static_cast<std::int32_t>(number), base::Text(descriptionOf(number))};
}

base::RuntimeError unknownUser() {
    return {-2147217843, u"Kein zulässiger Kontoname oder falsches Kennwort."};
}

base::RuntimeError rowChanged() {
    return {-2147217864,
            u"Das Microsoft Jet-Datenbankmodul hat den Vorgang angehalten, da Sie und ein weiterer Benutzer "
            u"gleichzeitig versuchen, dieselben Daten zu verändern."};
}

base::RuntimeError rowDeleted() {
    return {-2147217885, u"Der Datensatz wurde gelöscht."};
}

base::RuntimeError outOfReach() {
    return {-2147467259, u"Datenträger- oder Netzwerkfehler."};
}

base::RuntimeError dataSourceNotFound() {
    return {-2147467259, u"Der Datenquellenname wurde nicht gefunden, und es wurde kein Standardtreiber angegeben."};
}

}  // namespace comdouble
