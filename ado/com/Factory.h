#pragma once

#include <memory>

#include "ado/Ado.h"
#include "ado/com/SystemHeaders.h"

namespace ado::com {

/// The classes behind "ADODB.Connection" and "ADODB.Recordset".
struct Classes {
    CLSID connection;
    CLSID recordset;
};

/// The system's ADO objects. They are reached late bound, through IDispatch and by their members' names: the ids of
/// ADO's own interfaces and their layout differ between the systems.
///
/// The thread must be in a single-threaded apartment from before the first object is made until the last one, and
/// whatever it handed out, is gone.
class Factory final : public ConnectionFactory {
public:
    explicit Factory(const Classes& classes) : classes_(classes) {}

    /// @throws the system's error if the class's module cannot be loaded
    std::unique_ptr<ado::Connection> createConnection() override;
    std::unique_ptr<ado::Recordset> createRecordset() override;

private:
    Classes classes_;
};

}  // namespace ado::com
