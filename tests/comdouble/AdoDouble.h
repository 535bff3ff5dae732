#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>

#include "base/Text.h"
#include "win32/SystemHeaders.h"

/// A stand-in, inside the process, for the system's ADO classes over its database provider: automation objects that
/// are reached by name alone and behave as the originals are documented to, also where those refuse. Their data comes
/// from the engine in jet/.
///
/// What of the original's interface its one client does not use is refused, mostly with E_NOTIMPL, so that no test
/// passes by accident. Not modelled: a lock kept from the first assignment of a pessimistic record set to its Update.
namespace comdouble {

/// How a call fails instead of doing anything. The fields are those of the exception record, empty ones stay null.
struct Raised {
    HRESULT result = DISP_E_EXCEPTION;  ///< anything else is a bare result: no record is filled in
    WORD code = 0;
    SCODE scode = 0;
    std::optional<base::Text> source = {};
    std::optional<base::Text> description = {};
    std::optional<base::Text> helpFile = {};
    bool deferred = false;  ///< the record holds nothing but the function that fills it in
};

/// What goes wrong in the objects of a registration. Nothing, unless a test says so.
struct Faults {
    /// Calls that fail, by class and member: "Connection.Open", "Connection.Provider", "Recordset.MoveNext",
    /// "Field.Value", "Property.Value", ... Getting and putting a property fail both.
    std::map<base::Text, Raised> calls;
    /// Properties of the provider whose value cannot be put, by name.
    std::map<base::Text, Raised> properties;
    /// After so many more statements (record sets opened, Execute, AddNew, Update) the file is out of reach: the next
    /// one fails, and with it all that follow, also fetches of record sets that are open. Closing still works.
    std::optional<int> statementsUntilDeath;
    /// So many rows at the end are counted but not delivered.
    int missingRows = 0;
    /// A column that the record sets do not have.
    base::Text missingField;
    /// Columns that deliver something else; the function makes a variant for the caller to clear.
    std::map<base::Text, std::function<VARIANT()>> oddValues;
};

/// Registers the classes for this apartment, under ids that no system has, from construction to destruction. One at a
/// time; the thread must be in an apartment of its own (STA).
class Registration {
public:
    /// Starts without faults, and with no breaches counted.
    Registration();
    ~Registration();
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;

    static const CLSID& connectionClass();
    static const CLSID& recordsetClass();

    /// May be changed at any time; the next call sees it.
    static Faults& faults();

private:
    DWORD connectionCookie_ = 0;
    DWORD recordsetCookie_ = 0;
};

/// Objects of the double that somebody still holds: connections, record sets, and what they hand out.
std::int32_t liveObjects();

/// Exception records handed out whose filling-in function has not been called.
std::int32_t recordsNotFilledIn();

/// Calls that no caller may make and that cannot be refused: counting references on another thread or after the
/// thread has left COM. Calls that can be refused are (RPC_E_WRONG_THREAD, CO_E_NOTINITIALIZED), and count too.
std::int32_t breaches();

}  // namespace comdouble
