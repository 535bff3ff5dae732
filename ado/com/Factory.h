#pragma once

#include <memory>

#include "ado/Ado.h"
#include "ado/com/SystemHeaders.h"

namespace ado::com {

/// The classes registered as "ADODB.Connection" and "ADODB.Recordset".
struct Classes {
    CLSID connection;
    CLSID recordset;
};

/// The system's ADO objects. They are called late bound, through IDispatch and by their members' names, because the ids
/// and the layout of ADO's own interfaces differ between systems.
///
/// The thread must be in a single-threaded apartment before the first object is made, and must stay in it until all
/// objects and everything that they handed out are gone.
class Factory final : public ConnectionFactory {
public:
    explicit Factory(const Classes& classes) : classes_(classes) {}

    /// @throws the system's error if the module of the class cannot be loaded
    std::unique_ptr<ado::Connection> createConnection() override;
    std::unique_ptr<ado::Recordset> createRecordset() override;

private:
    Classes classes_;
};

}  // namespace ado::com
