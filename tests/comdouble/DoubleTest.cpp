#include <filesystem>
#include <gtest/gtest.h>
#include <limits>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "ado/com/Variant.h"
#include "tests/comdouble/Members.h"
#include "tests/comdouble/MemoryWatch.h"

/// Checks the double's assumptions against the system: ADO's type library, the variant types, and the allocator.
namespace comdouble {
namespace {

using ado::com::Variant;

template <typename Interface>
struct Release {
    void operator()(Interface* held) const { held->Release(); }
};
template <typename Interface>
using Held = std::unique_ptr<Interface, Release<Interface>>;

/// Replaces a named type (an enumeration, a number as wide as a pointer) by the plain type that it stands for.
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

std::filesystem::path systemAdo() {
    wchar_t path[MAX_PATH] = L"";
    ExpandEnvironmentStringsW(L"%CommonProgramFiles%\\System\\ADO\\msado15.dll", path, MAX_PATH);
    return path;
}

TEST(Double, HasTheMembersOfTheTypeLibrary) {
    ITypeLib* loaded = nullptr;
    ASSERT_EQ(LoadTypeLibEx(systemAdo().c_str(), REGKIND_NONE, &loaded), S_OK);
    const Held<ITypeLib> library(loaded);
    const std::map<base::TextView, const wchar_t*> types = {
        {u"Connection", L"_Connection"}, {u"Properties", L"Properties"}, {u"Property", L"Property"},
        {u"Recordset", L"_Recordset"},   {u"Fields", L"Fields"},         {u"Field", L"Field"}};
    for (const Member& member : members()) {
        const auto type = typeNamed(*library, types.at(member.className));
        ASSERT_TRUE(type);
        EXPECT_EQ(shown(member.kind, member.parameters, member.result),
                  shown(*type, {member.name.begin(), member.name.end()}, member.kind))
            << base::toUtf8(member.className) << "." << base::toUtf8(member.name);
    }
}

/// "?" for what is not a text and cannot become one.
base::Text readBySystem(const Variant& value) {
    VARIANT text{};
    VARIANT borrowed = value.raw();
    if (FAILED(VariantChangeTypeEx(&text, &borrowed, LOCALE_INVARIANT, 0, VT_BSTR))) return u"?";
    base::Text read(text.bstrVal, text.bstrVal + SysStringLen(text.bstrVal));
    VariantClear(&text);
    return read;
}

TEST(Variant, HasTheTypeAndTheTextThatTheSystemSees) {
    const struct {
        VARTYPE type;
        base::Value value;
        base::TextView text;
    } cases[] = {
        {VT_BOOL, true, u"-1"},
        {VT_BOOL, false, u"0"},
        {VT_UI1, std::uint8_t{255}, u"255"},
        {VT_I2, std::numeric_limits<std::int16_t>::min(), u"-32768"},
        {VT_I4, std::numeric_limits<std::int32_t>::min(), u"-2147483648"},
        {VT_CY, base::Currency{-12345}, u"-1.2345"},
        {VT_R4, -1.5F, u"-1.5"},
        {VT_R8, 0.1, u"0.1"},
        {VT_DATE, base::Date{2.75}, u"01/01/1900 18:00:00"},
        {VT_BSTR, base::Text(u" Grüße\0\xD83D\xDE00", 9), base::TextView(u" Grüße\0\xD83D\xDE00", 9)},
        {VT_BSTR, base::Text(), u""},
        {VT_DECIMAL, base::Decimal{true, 2, {1, 1, 0, 0}}, u"-42949672.97"},
        {VT_ARRAY | VT_UI1, base::Bytes{u'A', 0, 0xFC, 0}, u"Aü"},
        {VT_NULL, base::Null{}, u"?"},
    };
    for (const auto& [type, value, text] : cases) {
        const Variant sent(value);
        EXPECT_EQ(sent.raw().vt, type) << base::toUtf8(text);
        EXPECT_EQ(readBySystem(sent), text) << base::toUtf8(text);
        EXPECT_EQ(sent.value(), value) << base::toUtf8(text);
    }
}

TEST(MemoryWatch, CountsWhatIsNotFreedAndWhatIsFreedTwice) {
    ASSERT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
    MemoryWatch& watch = memoryWatch();
    watch.begin();
    const BSTR text = SysAllocString(L"Text");
    SAFEARRAY* const array = SafeArrayCreateVector(VT_UI1, 0, 3);
    EXPECT_GE(watch.notFreed(), 2U);
    SafeArrayDestroy(array);
    EXPECT_EQ(watch.notFreed(), 1U);
    SysFreeString(text);
    EXPECT_EQ(watch.notFreed() + watch.freedAgain(), 0U);
    SysFreeString(text);
    EXPECT_EQ(watch.freedAgain(), 1U);
    watch.end();
    CoUninitialize();
}

}  // namespace
}  // namespace comdouble
