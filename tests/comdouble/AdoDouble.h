#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>

#include "base/Text.h"
#include "win32/SystemHeaders.h"

/// A stand-in, inside the process, for the system's ADO classes over its database provider. What the objects do is the
/// business of ado/embedded, which has ADO's shape and numbers; here they become automation objects that are reached by
/// name alone and take a call only in the form in which the system's own type library has it (Members.h).
///
/// What of the original's interface its one client does not use is refused with E_NOTIMPL, so that no test passes by
/// accident.
namespace comdouble {

/// How a call fails. The fields are those of the exception record, empty ones stay null.
struct Raised {
    HRESULT result = DISP_E_EXCEPTION;  ///< anything else is a bare result: no record is filled in
    WORD code = 0;
    SCODE scode = 0;
    std::optional<base::Text> source = {};
    std::optional<base::Text> description = {};
    std::optional<base::Text> helpFile = {};
    bool deferred = false;  ///< the record holds nothing but the function that fills it in
};

/// Throws it as a std::shared_ptr<const Raised>.
[[noreturn]] void fail(const Raised& raised);

/// What goes wrong in the objects of a registration. Nothing, unless a test says so.
struct Faults {
    /// Calls that fail, by class and member: "Connection.Open", "Connection.Provider", "Recordset.MoveNext",
    /// "Field.Value", "Property.Value", ... Getting and putting a property fail both.
    std::map<base::Text, Raised> calls;
    /// Properties of the provider whose value cannot be put, by name.
    std::map<base::Text, Raised> properties;
    /// After so many more statements (record sets opened, Execute, AddNew, Update) the file is out of reach: the next
    /// one fails, and with it all that follow.
    std::optional<int> statementsUntilDeath;
    /// So many rows at the beginning are counted but not delivered.
    int missingRows = 0;
    /// A column that the record sets do not find.
    base::Text missingField;
    /// Columns that deliver something else; the function makes a variant for the caller to clear.
    std::map<base::Text, std::function<VARIANT()>> oddValues;
};

/// What is ordered and counted, for all objects together.
struct State {
    Faults faults;              ///< may be changed at any time; the next call sees it
    std::set<IDispatch*> held;  ///< connections, record sets and what they hand out, by somebody
    /// Exception records handed out whose filling-in function has not been called.
    std::atomic<std::int32_t> recordsNotFilledIn = 0;
    /// Calls that no caller may make: on another thread or after the thread has left COM. They are refused too
    /// (RPC_E_WRONG_THREAD, CO_E_NOTINITIALIZED), but for those that only count references.
    std::atomic<std::int32_t> breaches = 0;
};

State& state();

/// Classes under ids that no system has.
inline constexpr CLSID kConnectionClass{0x6B1F6A52, 0x4C1D, 0x4E0B, {0x9A, 0x37, 0x51, 0xD2, 0x08, 0xE4, 0x7C, 0x11}};
inline constexpr CLSID kRecordsetClass{0x6B1F6A53, 0x4C1D, 0x4E0B, {0x9A, 0x37, 0x51, 0xD2, 0x08, 0xE4, 0x7C, 0x11}};

/// Registers the classes for this apartment from construction to destruction. One at a time; the thread must be in an
/// apartment of its own (STA).
class Registration {
public:
    /// Starts without faults, and with no breaches counted.
    Registration();
    ~Registration();
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;

private:
    DWORD connectionCookie_ = 0;
    DWORD recordsetCookie_ = 0;
};

}  // namespace comdouble
