#include "ado/com/Factory.h"

#include "ado/com/Connection.h"
#include "ado/com/Recordset.h"

namespace ado::com {

std::unique_ptr<ado::Connection> Factory::createConnection() {
    return std::make_unique<Connection>(classes_.connection);
}

std::unique_ptr<ado::Recordset> Factory::createRecordset() {
    return std::make_unique<Recordset>(classes_.recordset);
}

}  // namespace ado::com
