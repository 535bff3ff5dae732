#include "tests/comdouble/Variants.h"

#include <cstring>
#include <new>
#include <type_traits>

#include "tests/comdouble/Refusal.h"

namespace comdouble {

static_assert(sizeof(wchar_t) == sizeof(char16_t));
static_assert(sizeof(VARIANT) == (sizeof(void*) == 8 ? 24 : 16));

namespace {

VARIANT emptyOf(VARTYPE type) {
    VARIANT variant;
    VariantInit(&variant);
    V_VT(&variant) = type;
    return variant;
}

VARIANT bytesVariant(const base::Bytes& bytes) {
    SAFEARRAY* const array = SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(bytes.size()));
    if (array == nullptr) throw std::bad_alloc();
    if (!bytes.empty()) std::memcpy(array->pvData, bytes.data(), bytes.size());
    VARIANT variant = emptyOf(VT_ARRAY | VT_UI1);
    V_ARRAY(&variant) = array;
    return variant;
}

base::Bytes fromByteArray(SAFEARRAY* array) {
    LONG low = 0;
    LONG high = -1;
    if (array == nullptr || SafeArrayGetDim(array) != 1 || FAILED(SafeArrayGetLBound(array, 1, &low)) ||
        FAILED(SafeArrayGetUBound(array, 1, &high)))
        throw adoError(AdoNumber::DataConversion);
    const auto* first = static_cast<const std::uint8_t*>(array->pvData);
    return {first, first + (high - low + 1)};
}

}  // namespace

BSTR toBstr(base::TextView text) {
    OLECHAR* const copy = SysAllocStringLen(nullptr, static_cast<UINT>(text.size()));
    if (copy == nullptr) throw std::bad_alloc();
    if (!text.empty()) std::memcpy(copy, text.data(), text.size() * sizeof(char16_t));
    return copy;
}

base::Text fromBstr(BSTR text) {
    base::Text copy(SysStringLen(text), u'\0');
    if (!copy.empty()) std::memcpy(copy.data(), text, copy.size() * sizeof(char16_t));
    return copy;
}

base::Text textOf(const VARIANT& variant) {
    return V_VT(&variant) == VT_BSTR ? fromBstr(V_BSTR(&variant)) : base::Text();
}

VARIANT numberVariant(std::int32_t number) {
    VARIANT variant = emptyOf(VT_I4);
    V_I4(&variant) = number;
    return variant;
}

VARIANT booleanVariant(bool value) {
    VARIANT variant = emptyOf(VT_BOOL);
    V_BOOL(&variant) = value ? VARIANT_TRUE : VARIANT_FALSE;
    return variant;
}

VARIANT errorVariant(SCODE error) {
    VARIANT variant = emptyOf(VT_ERROR);
    V_ERROR(&variant) = error;
    return variant;
}

VARIANT textVariant(base::TextView text) {
    VARIANT variant = emptyOf(VT_BSTR);
    V_BSTR(&variant) = toBstr(text);
    return variant;
}

VARIANT countVariant(std::int64_t count) {
    if constexpr (sizeof(void*) == 8) {
        VARIANT variant = emptyOf(VT_I8);
        V_I8(&variant) = count;
        return variant;
    } else {
        return numberVariant(static_cast<std::int32_t>(count));
    }
}

VARIANT objectVariant(IDispatch* object) {
    VARIANT variant = emptyOf(VT_DISPATCH);
    V_DISPATCH(&variant) = object;
    return variant;
}

VARIANT toVariant(const base::Value& value) {
    struct Visitor {
        VARIANT operator()(base::Null) const { return emptyOf(VT_NULL); }
        VARIANT operator()(bool truth) const { return booleanVariant(truth); }
        VARIANT operator()(std::uint8_t number) const {
            VARIANT variant = emptyOf(VT_UI1);
            V_UI1(&variant) = number;
            return variant;
        }
        VARIANT operator()(std::int16_t number) const {
            VARIANT variant = emptyOf(VT_I2);
            V_I2(&variant) = number;
            return variant;
        }
        VARIANT operator()(std::int32_t number) const { return numberVariant(number); }
        VARIANT operator()(base::Currency amount) const {
            VARIANT variant = emptyOf(VT_CY);
            V_CY(&variant).int64 = amount.tenThousandths;
            return variant;
        }
        VARIANT operator()(float number) const {
            VARIANT variant = emptyOf(VT_R4);
            V_R4(&variant) = number;
            return variant;
        }
        VARIANT operator()(double number) const {
            VARIANT variant = emptyOf(VT_R8);
            V_R8(&variant) = number;
            return variant;
        }
        VARIANT operator()(base::Date date) const {
            VARIANT variant = emptyOf(VT_DATE);
            V_DATE(&variant) = date.days;
            return variant;
        }
        VARIANT operator()(const base::Text& text) const { return textVariant(text); }
        VARIANT operator()(const base::Bytes& bytes) const { return bytesVariant(bytes); }
        VARIANT operator()(const base::Guid&) const { throw Refusal(E_NOTIMPL); }
        VARIANT operator()(const base::Decimal&) const { throw Refusal(E_NOTIMPL); }
    };
    return std::visit(Visitor{}, value);
}

base::Value fromVariant(const VARIANT& variant) {
    switch (V_VT(&variant)) {
        case VT_NULL:
            return base::Null{};
        case VT_BOOL:
            return V_BOOL(&variant) != VARIANT_FALSE;
        case VT_UI1:
            return V_UI1(&variant);
        case VT_I2:
            return V_I2(&variant);
        case VT_I4:
            return std::int32_t{V_I4(&variant)};
        case VT_CY:
            return base::Currency{V_CY(&variant).int64};
        case VT_R4:
            return V_R4(&variant);
        case VT_R8:
            return V_R8(&variant);
        case VT_DATE:
            return base::Date{V_DATE(&variant)};
        case VT_BSTR:
            return fromBstr(V_BSTR(&variant));
        case VT_ARRAY | VT_UI1:
            return fromByteArray(V_ARRAY(&variant));
        default:
            throw adoError(AdoNumber::DataConversion);
    }
}

}  // namespace comdouble
