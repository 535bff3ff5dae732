#include "tests/comdouble/AutomationObject.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace comdouble {

namespace {

constexpr std::int32_t kAdoFacility = static_cast<std::int32_t>(0x800A0000U);

BSTR optionalBstr(const std::optional<base::Text>& text) {
    if (!text) return nullptr;
    return SysAllocStringLen(reinterpret_cast<const OLECHAR*>(text->data()), static_cast<UINT>(text->size()));
}

void fillIn(const Raised& raised, EXCEPINFO& record) {
    record = {};
    record.wCode = raised.code;
    record.scode = raised.scode;
    record.bstrSource = optionalBstr(raised.source);
    record.bstrDescription = optionalBstr(raised.description);
    record.bstrHelpFile = optionalBstr(raised.helpFile);
}

/// What the last record handed out must still be filled with.
Raised& deferred() {
    static Raised last;
    return last;
}

HRESULT STDAPICALLTYPE fillInNow(EXCEPINFO* record) {
    fillIn(deferred(), *record);
    --state().recordsNotFilledIn;
    return S_OK;
}

HRESULT raise(const Raised& raised, EXCEPINFO* record) {
    if (raised.result != DISP_E_EXCEPTION || record == nullptr) return raised.result;
    if (raised.deferred) {
        *record = {};
        record->pfnDeferredFillIn = fillInNow;
        deferred() = raised;
        ++state().recordsNotFilledIn;
    } else {
        fillIn(raised, *record);
    }
    return raised.result;
}

void checkForm(const Member& member, const DISPPARAMS& given) {
    const bool isPut = member.kind == DISPATCH_PROPERTYPUT;
    if (isPut && (given.cNamedArgs != 1 || given.rgdispidNamedArgs[0] != DISPID_PROPERTYPUT))
        fail({.result = DISP_E_PARAMNOTFOUND});
    if (!isPut && given.cNamedArgs != 0) fail({.result = DISP_E_NONAMEDARGS});
    const bool isPlainGet = member.kind == DISPATCH_PROPERTYGET && member.parameters.empty();
    if (isPlainGet && given.cArgs > 0) fail({.result = DISP_E_NOTACOLLECTION});  // the result has no items
    const auto required =
        static_cast<UINT>(std::ranges::count(member.parameters, false, &Member::Parameter::isOptional));
    if (given.cArgs > member.parameters.size() || given.cArgs < required) fail({.result = DISP_E_BADPARAMCOUNT});
}

bool isMissing(const VARIANT* given) {
    return given == nullptr || (V_VT(given) == VT_ERROR && V_ERROR(given) == DISP_E_PARAMNOTFOUND);
}

/// @param given  null if the call does not have this argument
HRESULT take(const Member::Parameter& parameter, VARIANT* given, VARIANT* taken) {
    if ((parameter.type & VT_BYREF) != 0 && given != nullptr)
        return (V_VT(given) & VT_BYREF) != 0 ? E_NOTIMPL : DISP_E_TYPEMISMATCH;  // the result needs a variant
    if (isMissing(given) && parameter.isOptional) {
        if (parameter.type != VT_I4) return S_OK;
        V_VT(taken) = VT_I4;
        V_I4(taken) = ado::adOptionUnspecified;
        return S_OK;
    }
    if ((V_VT(given) & VT_BYREF) != 0) return E_NOTIMPL;
    if (parameter.type == VT_VARIANT) return VariantCopy(taken, given);
    return VariantChangeType(taken, given, 0, parameter.type);
}

}  // namespace

ado::com::Variant AutomationObject::create(base::TextView className, Subject subject) {
    AutomationObject* const made = std::make_unique<AutomationObject>(className, std::move(subject)).release();
    ado::com::Variant shared(made);
    made->Release();
    return shared;
}

const Subject* AutomationObject::subjectOf(IDispatch* object) {
    return state().held.contains(object) ? &static_cast<AutomationObject*>(object)->subject_ : nullptr;
}

AutomationObject::AutomationObject(base::TextView className, Subject subject)
    : className_(className), subject_(std::move(subject)), thread_(GetCurrentThreadId()) {
    state().held.insert(this);
}

AutomationObject::~AutomationObject() {
    state().held.erase(this);
}

/// References are counted in any case: a wrong count must show as a breach and not as a crash.
ULONG AutomationObject::AddRef() {
    static_cast<void>(requireOwnApartment());
    return ++references_;
}

ULONG AutomationObject::Release() {
    static_cast<void>(requireOwnApartment());
    const ULONG left = --references_;
    if (left == 0) const std::unique_ptr<AutomationObject> last(this);
    return left;
}

/// Counts a breach if the call comes from another thread or from outside COM.
HRESULT AutomationObject::requireOwnApartment() const {
    APTTYPE type{};
    APTTYPEQUALIFIER qualifier{};
    HRESULT result = CoGetApartmentType(&type, &qualifier);
    if (GetCurrentThreadId() != thread_) result = RPC_E_WRONG_THREAD;
    if (FAILED(result)) ++state().breaches;
    return result;
}

HRESULT AutomationObject::QueryInterface(REFIID id, void** object) {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (const HRESULT wrong = requireOwnApartment(); FAILED(wrong)) return wrong;
    if (id != IID_IUnknown && id != IID_IDispatch) return E_NOINTERFACE;
    AddRef();
    *object = static_cast<IDispatch*>(this);
    return S_OK;
}

HRESULT AutomationObject::GetTypeInfoCount(UINT* count) {
    *count = 0;
    return S_OK;
}

HRESULT AutomationObject::GetTypeInfo(UINT /*index*/, LCID /*locale*/, ITypeInfo** info) {
    *info = nullptr;
    return DISP_E_BADINDEX;
}

HRESULT AutomationObject::GetIDsOfNames(REFIID mustBeNull, LPOLESTR* names, UINT count, LCID /*locale*/, DISPID* ids) {
    if (const HRESULT wrong = requireOwnApartment(); FAILED(wrong)) return wrong;
    if (mustBeNull != IID_NULL) return DISP_E_UNKNOWNINTERFACE;
    if (count != 1) return E_NOTIMPL;  // more names would be those of arguments, but arguments are not called by name
    const base::TextView name(reinterpret_cast<const char16_t*>(names[0]));
    const auto found = std::ranges::find_if(members(), [&](const Member& member) {
        return member.className == className_ && base::equalsIgnoringAsciiCase(member.name, name);
    });
    *ids = found == members().end() ? DISPID_UNKNOWN : static_cast<DISPID>(found - members().begin()) + 1;
    return *ids == DISPID_UNKNOWN ? DISP_E_UNKNOWNNAME : S_OK;
}

HRESULT AutomationObject::Invoke(DISPID id, REFIID mustBeNull, LCID /*locale*/, WORD kinds, DISPPARAMS* parameters,
                                 VARIANT* result, EXCEPINFO* record, UINT* /*badArgument*/) {
    if (const HRESULT wrong = requireOwnApartment(); FAILED(wrong)) return wrong;
    if (mustBeNull != IID_NULL) return DISP_E_UNKNOWNINTERFACE;
    if (parameters == nullptr) return E_INVALIDARG;
    AddRef();  // a call may release the last reference to its own object
    HRESULT answer = S_OK;
    try {
        ado::com::Variant delivered = carryOut(memberFor(id, kinds), *parameters);
        if (result != nullptr) *result = std::exchange(*delivered.out(), {});
    } catch (const base::RuntimeError& error) {
        answer = raise(described(error), record);
    } catch (const std::shared_ptr<const Raised>& raised) {
        answer = raise(*raised, record);
    }
    Release();
    return answer;
}

const Member& AutomationObject::memberFor(DISPID id, WORD kinds) const {
    // A call may set one property, and must then do nothing else.
    const bool isPut = (kinds & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0;
    const bool isKnown = id > 0 && static_cast<std::size_t>(id) <= members().size();
    if (!isKnown || (isPut && kinds != DISPATCH_PROPERTYPUT)) fail({.result = DISP_E_MEMBERNOTFOUND});
    const base::TextView name = members()[static_cast<std::size_t>(id) - 1].name;
    for (const Member& member : members())
        if (member.className == className_ && member.name == name && (member.kind & kinds) != 0) return member;
    fail({.result = DISP_E_MEMBERNOTFOUND});
}

ado::com::Variant AutomationObject::carryOut(const Member& member, const DISPPARAMS& parameters) {
    checkForm(member, parameters);
    Arguments arguments;
    for (UINT place = 0; place < member.parameters.size(); ++place) {
        VARIANT* given = place < parameters.cArgs ? &parameters.rgvarg[parameters.cArgs - 1 - place] : nullptr;
        const HRESULT taken = take(member.parameters[place], given, arguments.emplace_back().out());
        if (FAILED(taken)) fail({.result = taken});
    }
    const base::Text call = base::Text(className_).append(u".").append(member.name);
    const base::Text item =
        member.name == u"Item" && arguments[0].raw().vt == VT_BSTR ? arguments[0].text() : subject_.name;
    for (const base::Text& ordered : {call, base::Text(call).append(u":").append(item)}) {
        const auto found = state().faults.calls.find(ordered);
        if (found != state().faults.calls.end()) fail(found->second);
    }
    ado::com::Variant delivered = member.run(subject_, arguments);
    if (member.result != VT_VOID && member.result != VT_VARIANT)
        VariantChangeType(delivered.out(), delivered.out(), 0, member.result);
    return delivered;
}

/// Errors of the ADO classes get the automation facility; errors of the provider are complete results already.
Raised AutomationObject::described(const base::RuntimeError& error) const {
    const bool isOwn = error.number() > 0;
    return {.scode = isOwn ? kAdoFacility | error.number() : error.number(),
            .source = isOwn ? base::Text(u"ADODB.").append(className_) : u"Microsoft JET Database Engine",
            .description = error.description()};
}

}  // namespace comdouble
