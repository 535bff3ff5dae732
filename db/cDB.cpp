#include "db/cDB.h"

#include <utility>
#include <variant>

#include "app/mPublic.h"
#include "settings/cINI.h"

namespace tolv {

cDB::cDB(ado::ConnectionFactory& connections, const platform::Regional& regional)
    : regional_(regional), connection_(connections.createConnection()) {
    connection_->setProvider(u"Microsoft.Jet.OLEDB.4.0");
    ado::Properties& properties = connection_->Properties();
    properties.Item(u"Data Source").setValue(objINI->GetINIString(INIKey::BenKtoPath) + u"\\BenKTO.mdb");
    properties.Item(u"Jet OLEDB:Database Password").setValue(base::Text(kAdministratorPassword));
    connection_->Open(u"", u"", u"", ado::adOptionUnspecified);
}

cDB::~cDB() {
    if (connection_->State() == ado::adStateOpen) connection_->Close();
}

base::Text cDB::GiveTextBoxValueForFORM(base::Value value) const {
    if (auto* text = std::get_if<base::Text>(&value)) return std::move(*text);
    return base::isNull(value) ? base::Text() : regional_.toText(value);
}

base::Value cDB::GiveTextBoxValueForDB(const base::Text& text) const {
    const base::TextView trimmed = base::trimBlanks(text);
    if (trimmed.empty()) return base::Null{};
    return base::Text(trimmed);
}

}  // namespace tolv
