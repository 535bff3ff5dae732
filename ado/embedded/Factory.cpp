#include "ado/embedded/Factory.h"

#include "ado/embedded/Recordset.h"

namespace ado::embedded {

std::unique_ptr<ado::Connection> Factory::createConnection() {
    return std::make_unique<Connection>(storageOf_);
}

std::unique_ptr<ado::Recordset> Factory::createRecordset() {
    return std::make_unique<Recordset>();
}

}  // namespace ado::embedded
