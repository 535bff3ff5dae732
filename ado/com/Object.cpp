#include "ado/com/Object.h"

#include <cwchar>
#include <type_traits>

#include "ado/com/ComError.h"

namespace ado::com {

namespace {

// IDispatch and IID_NULL under names of our own, so that no library of ids has to be linked for these two.
constexpr GUID kDispatch{0x00020400, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
constexpr GUID kNoInterface{};

// What differs between 32 and 64 bits in a late-bound call: sizes and calling conventions, which the compiler takes
// from the system's headers, are checked against the documented ones.
constexpr bool k64Bit = sizeof(void*) == 8;
static_assert(sizeof(VARIANT) == (k64Bit ? 24 : 16) && offsetof(VARIANT, lVal) == 8);
static_assert(sizeof(DECIMAL) == 16);
static_assert(sizeof(DISPPARAMS) == (k64Bit ? 24 : 16));
static_assert(offsetof(DISPPARAMS, cArgs) == 2 * sizeof(void*) &&
              offsetof(DISPPARAMS, cNamedArgs) == 2 * sizeof(void*) + 4);
static_assert(sizeof(EXCEPINFO) == (k64Bit ? 64 : 32));
static_assert(offsetof(EXCEPINFO, bstrSource) == (k64Bit ? 8 : 4));
static_assert(offsetof(EXCEPINFO, pfnDeferredFillIn) == (k64Bit ? 48 : 24));
static_assert(offsetof(EXCEPINFO, scode) == (k64Bit ? 56 : 28));
static_assert(sizeof(BSTR) == sizeof(void*) && sizeof(OLECHAR) == 2 && sizeof(VARIANT_BOOL) == 2);
// Where the calling conventions differ, a function type without __stdcall is another type.
static_assert(std::is_same_v<decltype(&IDispatch::Invoke),
                             HRESULT (__stdcall IDispatch::*)(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*,
                                                              EXCEPINFO*, UINT*)>);
static_assert(std::is_same_v<decltype(&IUnknown::Release), ULONG (__stdcall IUnknown::*)()>);
static_assert(std::is_same_v<decltype(EXCEPINFO::pfnDeferredFillIn), HRESULT(__stdcall*)(EXCEPINFO*)>);

}  // namespace

Object::Object(IDispatch* object) : object_(object) {
    object_->AddRef();
}

Object::Object(const CLSID& classId) {
    requireSuccess(
        CoCreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER, kDispatch, reinterpret_cast<void**>(&object_)));
}

Object::Object(Object&& other) noexcept : object_(std::exchange(other.object_, nullptr)), ids_(std::move(other.ids_)) {}

Object& Object::operator=(Object&& other) noexcept {
    std::swap(object_, other.object_);
    std::swap(ids_, other.ids_);
    return *this;
}

Object::~Object() {
    if (object_ != nullptr) object_->Release();
}

Variant Object::get(const wchar_t* member) const {
    DISPPARAMS none{};
    return invoke(member, DISPATCH_PROPERTYGET, none);
}

Variant Object::get(const wchar_t* member, const Variant& argument) const {
    VARIANT borrowed = argument.raw();
    DISPPARAMS one{&borrowed, nullptr, 1, 0};
    return invoke(member, DISPATCH_PROPERTYGET | DISPATCH_METHOD, one);
}

void Object::put(const wchar_t* member, const Variant& value) const {
    VARIANT borrowed = value.raw();
    DISPID put = DISPID_PROPERTYPUT;
    DISPPARAMS one{&borrowed, &put, 1, 1};
    invoke(member, DISPATCH_PROPERTYPUT, one);
}

void Object::call(const wchar_t* member, std::initializer_list<const Variant*> arguments) const {
    std::vector<VARIANT> borrowed;  // in reverse order, as automation requires
    for (auto argument = std::rbegin(arguments); argument != std::rend(arguments); ++argument)
        borrowed.push_back((*argument)->raw());
    DISPPARAMS parameters{borrowed.data(), nullptr, static_cast<UINT>(borrowed.size()), 0};
    invoke(member, DISPATCH_METHOD, parameters);
}

DISPID Object::idOf(const wchar_t* member) const {
    for (const auto& [name, id] : ids_)
        if (name == member || std::wcscmp(name, member) == 0) return id;
    // The parameter is declared without const, but nothing changes the text.
    auto* name = const_cast<LPOLESTR>(member);
    DISPID id = DISPID_UNKNOWN;
    requireSuccess(object_->GetIDsOfNames(kNoInterface, &name, 1, LOCALE_USER_DEFAULT, &id));
    ids_.emplace_back(member, id);
    return id;
}

Variant Object::invoke(const wchar_t* member, WORD kind, DISPPARAMS& parameters) const {
    const DISPID id = idOf(member);
    Variant result;
    ExceptionRecord record;
    // Setting a property gives no result.
    VARIANT* const place = kind == DISPATCH_PROPERTYPUT ? nullptr : result.out();
    const HRESULT outcome =
        object_->Invoke(id, kNoInterface, LOCALE_USER_DEFAULT, kind, &parameters, place, record.out(), nullptr);
    if (outcome == DISP_E_EXCEPTION) throw record.error();
    requireSuccess(outcome);
    return result;
}

}  // namespace ado::com
