#include "tests/comdouble/AutomationObject.h"

#include <algorithm>
#include <atomic>
#include <memory>

#include "tests/comdouble/Refusal.h"
#include "tests/comdouble/State.h"
#include "tests/comdouble/Variants.h"

namespace comdouble {

namespace {

constexpr std::int32_t kAdoFacility = static_cast<std::int32_t>(0x800A0000U);

bool isInApartment() {
    APTTYPE type{};
    APTTYPEQUALIFIER qualifier{};
    return SUCCEEDED(CoGetApartmentType(&type, &qualifier));
}

BSTR optionalBstr(const std::optional<base::Text>& text) {
    return text ? toBstr(*text) : nullptr;
}

void fillIn(const Raised& raised, EXCEPINFO& record) {
    record = {};
    record.wCode = raised.code;
    record.scode = raised.scode;
    record.bstrSource = optionalBstr(raised.source);
    record.bstrDescription = optionalBstr(raised.description);
    record.bstrHelpFile = optionalBstr(raised.helpFile);
}

HRESULT STDAPICALLTYPE fillInNow(EXCEPINFO* record) {
    fillIn(state().deferred, *record);
    --state().recordsNotFilledIn;
    return S_OK;
}

HRESULT raise(const Raised& raised, EXCEPINFO* record) {
    if (raised.result != DISP_E_EXCEPTION || record == nullptr) return raised.result;
    if (raised.deferred) {
        *record = {};
        record->pfnDeferredFillIn = fillInNow;
        state().deferred = raised;
        ++state().recordsNotFilledIn;
    } else {
        fillIn(raised, *record);
    }
    return raised.result;
}

}  // namespace

AutomationObject::AutomationObject(base::TextView className, std::span<const Member> members)
    : className_(className), members_(members), thread_(GetCurrentThreadId()) {
    ++state().liveObjects;
}

AutomationObject::~AutomationObject() {
    --state().liveObjects;
}

/// References are counted in any case: whoever got one wrong is to be seen by the breach, not by a crash.
ULONG AutomationObject::AddRef() {
    if (FAILED(requireOwnApartment())) ++state().breaches;
    return ++references_;
}

ULONG AutomationObject::Release() {
    if (FAILED(requireOwnApartment())) ++state().breaches;
    const ULONG left = --references_;
    if (left == 0) const std::unique_ptr<AutomationObject> last(this);
    return left;
}

HRESULT AutomationObject::requireOwnApartment() const {
    if (GetCurrentThreadId() != thread_) return RPC_E_WRONG_THREAD;
    return isInApartment() ? S_OK : CO_E_NOTINITIALIZED;
}

HRESULT AutomationObject::QueryInterface(REFIID id, void** object) {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (const HRESULT wrong = requireOwnApartment(); FAILED(wrong)) {
        ++state().breaches;
        return wrong;
    }
    if (id != IID_IUnknown && id != IID_IDispatch) return E_NOINTERFACE;
    AddRef();
    *object = static_cast<IDispatch*>(this);
    return S_OK;
}

HRESULT AutomationObject::GetTypeInfoCount(UINT* count) {
    if (count == nullptr) return E_POINTER;
    *count = 0;
    return S_OK;
}

HRESULT AutomationObject::GetTypeInfo(UINT /*index*/, LCID /*locale*/, ITypeInfo** info) {
    if (info != nullptr) *info = nullptr;
    return DISP_E_BADINDEX;
}

HRESULT AutomationObject::GetIDsOfNames(REFIID mustBeNull, LPOLESTR* names, UINT count, LCID /*locale*/, DISPID* ids) {
    if (const HRESULT wrong = requireOwnApartment(); FAILED(wrong)) {
        ++state().breaches;
        return wrong;
    }
    if (mustBeNull != IID_NULL) return DISP_E_UNKNOWNINTERFACE;
    if (names == nullptr || ids == nullptr || count == 0) return E_INVALIDARG;
    std::fill(ids, ids + count, DISPID_UNKNOWN);
    const base::TextView name(reinterpret_cast<const char16_t*>(names[0]));
    for (const Member& member : members_)
        if (base::equalsIgnoringAsciiCase(member.name, name)) ids[0] = member.id;
    // Names of arguments follow; arguments are not called by name.
    return ids[0] == DISPID_UNKNOWN || count > 1 ? DISP_E_UNKNOWNNAME : S_OK;
}

HRESULT AutomationObject::Invoke(DISPID id, REFIID mustBeNull, LCID /*locale*/, WORD kinds, DISPPARAMS* parameters,
                                 VARIANT* result, EXCEPINFO* record, UINT* badArgument) {
    if (const HRESULT wrong = requireOwnApartment(); FAILED(wrong)) {
        ++state().breaches;
        return wrong;
    }
    if (mustBeNull != IID_NULL) return DISP_E_UNKNOWNINTERFACE;
    if (parameters == nullptr) return E_INVALIDARG;
    if (result != nullptr) VariantInit(result);
    AddRef();  // a call may give up the last reference to its own object
    HRESULT answer = S_OK;
    try {
        carryOut(id, kinds, *parameters, result);
    } catch (const base::RuntimeError& error) {
        describe(error, record);
        answer = DISP_E_EXCEPTION;
    } catch (const Ordered& ordered) {
        answer = raise(ordered.raised(), record);
    } catch (const Refusal& refusal) {
        answer = refusal.result();
        if (refusal.argument() && badArgument != nullptr) *badArgument = parameters->cArgs - 1 - *refusal.argument();
    } catch (const std::bad_alloc&) {
        answer = E_OUTOFMEMORY;
    }
    Release();
    return answer;
}

void AutomationObject::carryOut(DISPID id, WORD kinds, const DISPPARAMS& parameters, VARIANT* result) {
    const Member& member = memberFor(id, kinds);
    checkForm(member, kinds, parameters);
    raiseOrdered(member);
    const Arguments arguments(parameters);
    if ((kinds & DISPATCH_PROPERTYPUT) != 0) {
        put(id, arguments.at(0));
        return;
    }
    VARIANT delivered = call(id, arguments);
    if (result != nullptr)
        *result = delivered;
    else
        VariantClear(&delivered);
}

const Member& AutomationObject::memberFor(DISPID id, WORD kinds) const {
    const auto found = std::ranges::find(members_, id, &Member::id);
    // One put at a time, and it is nothing else besides.
    const bool isPut = (kinds & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0;
    if (found == members_.end() || (isPut && kinds != DISPATCH_PROPERTYPUT) || (found->kinds & kinds) == 0)
        throw Refusal(DISP_E_MEMBERNOTFOUND);
    return *found;
}

void AutomationObject::checkForm(const Member& member, WORD kinds, const DISPPARAMS& parameters) const {
    const bool isPut = kinds == DISPATCH_PROPERTYPUT;
    if (isPut && (parameters.cNamedArgs != 1 || parameters.rgdispidNamedArgs == nullptr ||
                  parameters.rgdispidNamedArgs[0] != DISPID_PROPERTYPUT))
        throw Refusal(DISP_E_PARAMNOTFOUND);
    if (!isPut && parameters.cNamedArgs != 0) throw Refusal(DISP_E_NONAMEDARGS);
    const UINT most = isPut ? 1 : member.most;
    const UINT required = isPut ? 1 : member.required;
    if (parameters.cArgs > most) throw Refusal(DISP_E_BADPARAMCOUNT);
    const Arguments arguments(parameters);
    for (UINT argument = 0; argument < required; ++argument)
        if (arguments.isMissing(argument)) throw Refusal(DISP_E_PARAMNOTOPTIONAL);
}

void AutomationObject::raiseOrdered(const Member& member) const {
    const auto& calls = state().faults.calls;
    const auto ordered = calls.find(base::Text(className_).append(u".").append(member.name));
    if (ordered != calls.end()) throw Ordered(ordered->second);
}

void AutomationObject::put(DISPID /*id*/, const VARIANT& /*value*/) {
    throw Refusal(DISP_E_MEMBERNOTFOUND);
}

/// The classes' own failures are of the automation facility, the provider's are results of their own.
void AutomationObject::describe(const base::RuntimeError& error, EXCEPINFO* record) const {
    if (record == nullptr) return;
    const bool isOwn = error.number() > 0;
    fillIn({.scode = isOwn ? kAdoFacility | error.number() : error.number(),
            .source = isOwn ? base::Text(u"ADODB.").append(className_) : u"Microsoft JET Database Engine",
            .description = error.description()},
           *record);
}

}  // namespace comdouble
