#pragma once

#include <algorithm>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "tests/comdouble/AdoDouble.h"
#include "tests/comdouble/Ref.h"
#include "tests/comdouble/Variants.h"

/// Calls of automation objects without anything in between, for tests of what an object answers.
namespace test {

inline constexpr WORD kMethod = DISPATCH_METHOD;

using Object = comdouble::Ref<IDispatch>;

/// What a call gave back; frees it.
class Answer {
public:
    Answer() = default;
    Answer(Answer&& other) noexcept
        : result(other.result),
          value(std::exchange(other.value, VARIANT{})),
          record(std::exchange(other.record, EXCEPINFO{})),
          badArgument(other.badArgument) {}
    Answer& operator=(Answer&&) = delete;
    ~Answer() {
        VariantClear(&value);
        for (BSTR text : {record.bstrSource, record.bstrDescription, record.bstrHelpFile})
            SysFreeString(text);
    }

    /// 0; the classes' own small number; the provider's number; the bare result.
    std::int32_t number() const {
        if (result != DISP_E_EXCEPTION) return result;
        const auto code = static_cast<std::uint32_t>(record.scode);
        return (code & 0xFFFF0000U) == 0x800A0000U ? static_cast<std::int32_t>(code & 0xFFFFU) : record.scode;
    }
    base::Text description() const { return comdouble::fromBstr(record.bstrDescription); }
    Object object() const {
        return V_VT(&value) == VT_DISPATCH && V_DISPATCH(&value) != nullptr ? Object(*V_DISPATCH(&value)) : Object();
    }
    std::int32_t integer() const { return V_VT(&value) == VT_I4 ? V_I4(&value) : -1000; }
    base::Text text() const { return V_VT(&value) == VT_BSTR ? comdouble::textOf(value) : u"(no text)"; }
    bool truth() const { return V_VT(&value) == VT_BOOL && V_BOOL(&value) == VARIANT_TRUE; }

    HRESULT result = S_OK;
    VARIANT value{};
    EXCEPINFO record{};
    UINT badArgument = 99;
};

/// Arguments in the order of writing; frees them.
class Given {
public:
    Given(std::initializer_list<VARIANT> arguments) : reversed_(arguments.begin(), arguments.end()) {
        std::reverse(reversed_.begin(), reversed_.end());
    }
    Given(const Given&) = delete;
    Given& operator=(const Given&) = delete;
    ~Given() {
        for (VARIANT& argument : reversed_)
            VariantClear(&argument);
    }
    /// Behind those that are there.
    void add(VARIANT argument) { reversed_.insert(reversed_.begin(), argument); }
    VARIANT* data() { return reversed_.data(); }
    UINT count() const { return static_cast<UINT>(reversed_.size()); }

private:
    std::vector<VARIANT> reversed_;
};

inline VARIANT missing() {
    return comdouble::errorVariant(DISP_E_PARAMNOTFOUND);
}

inline VARIANT of(base::TextView text) {
    return comdouble::textVariant(text);
}

inline VARIANT of(std::int32_t number) {
    return comdouble::numberVariant(number);
}

inline VARIANT of(const Object& object) {
    if (object) object->AddRef();
    return comdouble::objectVariant(object.get());
}

/// Of no object: E_POINTER.
inline HRESULT idOf(const Object& object, base::TextView name, DISPID& id, REFIID mustBeNull = IID_NULL) {
    if (!object) return E_POINTER;
    std::wstring units(name.begin(), name.end());
    LPOLESTR names = units.data();
    return object->GetIDsOfNames(mustBeNull, &names, 1, LOCALE_USER_DEFAULT, &id);
}

inline void invokeId(Answer& answer, const Object& object, DISPID id, WORD kinds, Given& given,
                     DISPID* named = nullptr) {
    DISPPARAMS parameters{given.data(), named, given.count(), named == nullptr ? 0U : 1U};
    answer.result = object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, kinds, &parameters, &answer.value, &answer.record,
                                   &answer.badArgument);
}

/// Fails with DISP_E_UNKNOWNNAME where the object has no such member, and where there is no object.
inline Answer invoke(const Object& object, base::TextView name, WORD kinds, Given&& given) {
    Answer answer;
    DISPID id = 0;
    DISPID named = DISPID_PROPERTYPUT;
    answer.result = idOf(object, name, id);
    if (SUCCEEDED(answer.result))
        invokeId(answer, object, id, kinds, given, kinds == DISPATCH_PROPERTYPUT ? &named : nullptr);
    return answer;
}

inline Answer get(const Object& object, base::TextView name, Given&& given = {}) {
    return invoke(object, name, DISPATCH_PROPERTYGET, std::move(given));
}

}  // namespace test
