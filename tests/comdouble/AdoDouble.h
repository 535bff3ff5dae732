#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>

#include "base/Text.h"
#include "win32/SystemHeaders.h"

/// Stands in, inside the test's process, for the system's ADO classes over its database provider. ado/embedded does the
/// work, because it has ADO's interface and numbers; here its objects become automation objects whose members are
/// called by name only, and only in the form in which the system's own type library has them (Members.h).
///
/// Members that the tool does not use are refused with E_NOTIMPL, so that no test passes by accident.
namespace comdouble {

/// How a call fails. The fields are those of the exception record; empty ones stay null.
struct Raised {
    HRESULT result = DISP_E_EXCEPTION;  ///< with any other result no record is filled in
    WORD code = 0;
    SCODE scode = 0;
    std::optional<base::Text> source = {};
    std::optional<base::Text> description = {};
    std::optional<base::Text> helpFile = {};
    bool deferred = false;  ///< the record holds only a function that fills it in later
};

/// Throws it as a std::shared_ptr<const Raised>.
[[noreturn]] void fail(const Raised& raised);

/// Faults that a test injects into the objects of a registration; none by default.
struct Faults {
    /// Calls that fail, by class and member: "Connection.Open", "Recordset.MoveNext", ... For a property, both reading
    /// and setting it fail. A name after a colon means one item of a collection only: "Fields.Item:BenKTO_Pass",
    /// "Property.Value:Data Source".
    std::map<base::Text, Raised> calls;
    /// After this many more statements (record sets opened, Execute, AddNew, Update) the file cannot be reached: the
    /// next one fails, and so do all after it.
    std::optional<int> statementsUntilDeath;
    /// Columns that deliver another value; the function makes a variant, which the caller must clear.
    std::map<base::Text, std::function<VARIANT()>> oddValues;
};

/// Shared by all objects of the double.
struct State {
    Faults faults;              ///< may be changed at any time; the next call uses it
    std::set<IDispatch*> held;  ///< connections, record sets and what they hand out, while a reference is held
    /// Exception records that were handed out but whose filling-in function has not been called.
    std::atomic<std::int32_t> recordsNotFilledIn = 0;
    /// Forbidden calls: on another thread, or after the thread has left COM. They are also refused
    /// (RPC_E_WRONG_THREAD, CO_E_NOTINITIALIZED), except those that only count references.
    std::atomic<std::int32_t> breaches = 0;
};

State& state();

/// Class ids of the double; no system uses them.
inline constexpr CLSID kConnectionClass{0x6B1F6A52, 0x4C1D, 0x4E0B, {0x9A, 0x37, 0x51, 0xD2, 0x08, 0xE4, 0x7C, 0x11}};
inline constexpr CLSID kRecordsetClass{0x6B1F6A53, 0x4C1D, 0x4E0B, {0x9A, 0x37, 0x51, 0xD2, 0x08, 0xE4, 0x7C, 0x11}};

/// Registers the classes for this apartment while it lives. Only one at a time; the thread must be in a single-threaded
/// apartment (STA).
class Registration {
public:
    /// Starts without faults; no breaches are counted yet.
    Registration();
    ~Registration();
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;

private:
    DWORD connectionCookie_ = 0;
    DWORD recordsetCookie_ = 0;
};

}  // namespace comdouble
