#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <sstream>
#include <string>
#include <thread>

#include "ado/com/Object.h"
#include "tests/comdouble/Apartment.h"
#include "tests/comdouble/Members.h"
#include "tests/systemado/SystemAdo.h"

/// The double against the system's own ADO: which members can be called, and what a call in a wrong form gives.
namespace systemado {
namespace {

using ado::com::Object;
using ado::com::Variant;
using comdouble::Member;

template <typename Interface>
struct Release {
    void operator()(Interface* held) const { held->Release(); }
};
template <typename Interface>
using Held = std::unique_ptr<Interface, Release<Interface>>;

/// The plain type that a name stands for: enumerations, and counts that are as wide as a pointer.
VARTYPE plainType(ITypeInfo& info, const TYPEDESC& type) {
    if (type.vt == VT_PTR) {
        const VARTYPE inner = plainType(info, *type.lptdesc);
        return inner == VT_DISPATCH ? inner : static_cast<VARTYPE>(VT_BYREF | inner);
    }
    if (type.vt == VT_HRESULT) return VT_VOID;
    if (type.vt != VT_USERDEFINED) return type.vt;
    ITypeInfo* found = nullptr;
    EXPECT_EQ(info.GetRefTypeInfo(type.hreftype, &found), S_OK);
    const Held<ITypeInfo> named(found);
    TYPEATTR* attributes = nullptr;
    EXPECT_EQ(named->GetTypeAttr(&attributes), S_OK);
    const TYPEKIND kind = attributes->typekind;
    const VARTYPE plain = kind == TKIND_ALIAS  ? plainType(*named, attributes->tdescAlias)
                          : kind == TKIND_ENUM ? VARTYPE{VT_I4}
                                               : VARTYPE{VT_DISPATCH};
    named->ReleaseTypeAttr(attributes);
    return plain;
}

/// "call (8, 400c?, 3?) -> 9": types in hexadecimal, a question mark after an argument that may be left out.
std::string shown(WORD kind, const std::vector<Member::Parameter>& parameters, VARTYPE result) {
    std::ostringstream text;
    text << std::hex << (kind == DISPATCH_METHOD ? "call (" : kind == DISPATCH_PROPERTYGET ? "get (" : "put (");
    for (const auto& [type, isOptional] : parameters)
        text << (&type == &parameters.front().type ? "" : ", ") << type << (isOptional ? "?" : "");
    text << ") -> " << result;
    return text.str();
}

/// The same for the library's member, found by its name: Wine 8 cannot describe every member of Fields one by one.
std::string shown(ITypeInfo& type, std::wstring name, WORD kind) {
    ITypeComp* members = nullptr;
    if (FAILED(type.GetTypeComp(&members))) return "no members";
    const Held<ITypeComp> held(members);
    ITypeInfo* owner = nullptr;
    DESCKIND found = DESCKIND_NONE;
    BINDPTR description{};
    const ULONG hash = LHashValOfName(LOCALE_SYSTEM_DEFAULT, name.data());
    members->Bind(name.data(), hash, kind, &owner, &found, &description);
    if (found != DESCKIND_FUNCDESC) return "no such member";
    const Held<ITypeInfo> info(owner);
    const FUNCDESC& function = *description.lpfuncdesc;
    std::vector<Member::Parameter> parameters;
    for (SHORT place = 0; place < function.cParams; ++place) {
        const ELEMDESC& parameter = function.lprgelemdescParam[place];
        const bool isOptional = (parameter.paramdesc.wParamFlags & PARAMFLAG_FOPT) != 0;
        parameters.push_back({plainType(*info, parameter.tdesc), isOptional});
    }
    const VARTYPE result = plainType(*info, function.elemdescFunc.tdesc);
    info->ReleaseFuncDesc(description.lpfuncdesc);
    return shown(kind, parameters, result);
}

Held<ITypeInfo> typeNamed(ITypeLib& library, const std::wstring& wanted) {
    ITypeInfo* found = nullptr;
    for (UINT index = 0; index < library.GetTypeInfoCount() && found == nullptr; ++index) {
        BSTR name = nullptr;
        EXPECT_EQ(library.GetDocumentation(static_cast<INT>(index), &name, nullptr, nullptr, nullptr), S_OK);
        if (wanted == name) library.GetTypeInfo(index, &found);
        SysFreeString(name);
    }
    return Held<ITypeInfo>(found);
}

TEST(Double, HasTheMembersOfTheTypeLibrary) {
    ITypeLib* loaded = nullptr;
    ASSERT_EQ(LoadTypeLibEx(modulePath().c_str(), REGKIND_NONE, &loaded), S_OK);
    const Held<ITypeLib> library(loaded);
    const std::map<base::TextView, const wchar_t*> types = {
        {u"Connection", L"_Connection"}, {u"Properties", L"Properties"}, {u"Property", L"Property"},
        {u"Recordset", L"_Recordset"},   {u"Fields", L"Fields"},         {u"Field", L"Field"}};
    for (const Member& member : comdouble::members()) {
        const auto type = typeNamed(*library, types.at(member.className));
        ASSERT_TRUE(type);
        EXPECT_EQ(shown(member.kind, member.parameters, member.result),
                  shown(*type, {member.name.begin(), member.name.end()}, member.kind))
            << base::toUtf8(member.className) << "." << base::toUtf8(member.name);
    }
}

/// The bare result of a call. @param arguments  as written; nothing stands for an argument that is left out
HRESULT resultOf(const Object& object, std::wstring member, WORD kind,
                 const std::vector<std::optional<base::Value>>& arguments = {}, bool isValueNamed = false) {
    LPOLESTR name = member.data();
    DISPID id = 0;
    const HRESULT found = object.dispatch()->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_USER_DEFAULT, &id);
    if (FAILED(found)) return found;
    std::vector<Variant> values;
    std::vector<VARIANT> reversed;
    for (const auto& argument : arguments) {
        values.push_back(argument ? Variant(*argument) : Variant());
        reversed.push_back(values.back().raw());
        if (argument) continue;
        V_VT(&reversed.back()) = VT_ERROR;
        V_ERROR(&reversed.back()) = DISP_E_PARAMNOTFOUND;
    }
    std::reverse(reversed.begin(), reversed.end());
    DISPID put = DISPID_PROPERTYPUT;
    DISPPARAMS parameters{reversed.data(), isValueNamed ? &put : nullptr, static_cast<UINT>(reversed.size()),
                          isValueNamed ? 1U : 0U};
    Variant result;
    return object.dispatch()->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, kind, &parameters, result.out(), nullptr,
                                     nullptr);
}

TEST(Double, TakesCallsInTheSameFormsAsTheSystem) {
    constexpr WORD kGet = DISPATCH_PROPERTYGET;
    constexpr WORD kPut = DISPATCH_PROPERTYPUT;
    constexpr WORD kCall = DISPATCH_METHOD;
    const base::Value text = base::Text(u"x");
    const base::Value null = base::Null{};
    const base::Value provider = base::Text(u"Microsoft.Jet.OLEDB.4.0");
    const auto expectBoth = [&](const Object& connection, const Object& recordset) {
        const Object fields(recordset.get(L"Fields").object());
        const auto expect = [&](const char* what, HRESULT result, HRESULT expected) {
            EXPECT_EQ(result, expected) << what;
        };
        expect("no such member", resultOf(connection, L"Opne", kCall), DISP_E_UNKNOWNNAME);
        expect("letters in any case", resultOf(connection, L"sTATE", kGet), S_OK);
        expect("a property called", resultOf(connection, L"State", kCall), DISP_E_MEMBERNOTFOUND);
        expect("a property got or called", resultOf(connection, L"State", kGet | kCall), S_OK);
        expect("a property with an argument", resultOf(connection, L"State", kGet, {0}), DISP_E_NOTACOLLECTION);
        expect("a method got", resultOf(connection, L"Close", kGet), DISP_E_MEMBERNOTFOUND);
        expect("a put of what is read only", resultOf(connection, L"State", kPut, {1}, true), DISP_E_MEMBERNOTFOUND);
        expect("a put", resultOf(connection, L"Provider", kPut, {provider}, true), S_OK);
        expect("a put without name", resultOf(connection, L"Provider", kPut, {text}), DISP_E_PARAMNOTFOUND);
        expect("a put of null", resultOf(connection, L"Provider", kPut, {null}, true), DISP_E_TYPEMISMATCH);
        expect("a put of a reference", resultOf(connection, L"Provider", DISPATCH_PROPERTYPUTREF, {text}, true),
               DISP_E_MEMBERNOTFOUND);
        expect("too few", resultOf(connection, L"Execute", kCall), DISP_E_BADPARAMCOUNT);
        expect("too many", resultOf(connection, L"Execute", kCall, {text, {}, -1, 1}), DISP_E_BADPARAMCOUNT);
        expect("a required one left out", resultOf(connection, L"Execute", kCall, {{}}), DISP_E_TYPEMISMATCH);
        expect("null for a text", resultOf(connection, L"Open", kCall, {null}), DISP_E_TYPEMISMATCH);
        expect("a text for a number", resultOf(connection, L"Open", kCall, {{}, {}, {}, text}), DISP_E_TYPEMISMATCH);
        expect("null for a cursor", resultOf(recordset, L"Open", kCall, {{}, {}, null}), DISP_E_TYPEMISMATCH);
        expect("a method without result", resultOf(recordset, L"Close", kCall), DISP_E_EXCEPTION);
        expect("an item without index", resultOf(fields, L"Item", kGet), DISP_E_BADPARAMCOUNT);
        expect("an item with two", resultOf(fields, L"Item", kGet, {0, 0}), DISP_E_BADPARAMCOUNT);
        expect("an item called", resultOf(fields, L"Item", kCall, {0}), DISP_E_MEMBERNOTFOUND);
        expect("an item got or called", resultOf(fields, L"Item", kGet | kCall, {0}), DISP_E_EXCEPTION);
    };
    comdouble::Apartment apartment;
    {
        SCOPED_TRACE("the double");
        const Object connection(comdouble::kConnectionClass);
        expectBoth(connection, Object(comdouble::kRecordsetClass));
        // Wine's ADO runs the statement before it finds that the count cannot be written back.
        EXPECT_EQ(resultOf(connection, L"Execute", kCall, {text, {}}), DISP_E_TYPEMISMATCH);
    }
    apartment.expectNothingLeft();
    const SystemAdo system;
    SCOPED_TRACE("the system's");
    expectBoth(Object(kClasses.connection), Object(kClasses.recordset));
}

TEST(Double, RefusesCallsOnOtherThreadsAndAfterLeavingCom) {
    comdouble::Apartment apartment;
    std::optional<Object> connection(std::in_place, comdouble::kConnectionClass);
    std::thread([&] {
        ASSERT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
        EXPECT_EQ(resultOf(*connection, L"State", DISPATCH_PROPERTYGET), RPC_E_WRONG_THREAD);
        EXPECT_EQ(Object(connection->dispatch()).dispatch(), connection->dispatch());  // adds and drops a reference
        CoUninitialize();
    }).join();
    EXPECT_EQ(apartment.takeBreaches(), 3);
    apartment.leave();
    EXPECT_EQ(resultOf(*connection, L"State", DISPATCH_PROPERTYGET), CO_E_NOTINITIALIZED);
    EXPECT_EQ(comdouble::state().held.size(), 1U);
    connection.reset();
    EXPECT_EQ(apartment.takeBreaches(), 2);
    apartment.expectNothingLeft();
}

TEST(MemoryWatch, SeesWhatIsNotFreedAndWhatIsFreedTwice) {
    ASSERT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
    {
        const comdouble::MemoryWatch watch;
        const BSTR text = SysAllocString(L"Text");
        SAFEARRAY* const array = SafeArrayCreateVector(VT_UI1, 0, 3);
        EXPECT_GE(watch.notFreed(), 2U);
        SafeArrayDestroy(array);
        EXPECT_EQ(watch.notFreed(), 1U);
        SysFreeString(text);
        EXPECT_EQ(watch.notFreed() + watch.freedAgain(), 0U);
        SysFreeString(text);
        EXPECT_EQ(watch.freedAgain(), 1U);
    }
    CoUninitialize();
}

}  // namespace
}  // namespace systemado
