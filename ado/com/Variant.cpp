#include "ado/com/Variant.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

#include "ado/com/ComError.h"
#include "base/RuntimeError.h"

namespace ado::com {

namespace {

base::RuntimeError typeMismatch() {
    return base::runtimeError(base::RuntimeErrorNumber::TypeMismatch);
}

BSTR newString(base::TextView text) {
    if (text.size() > std::numeric_limits<UINT>::max() / sizeof(OLECHAR)) throw comError(E_OUTOFMEMORY);
    static_assert(sizeof(OLECHAR) == sizeof(char16_t));
    const BSTR string = SysAllocStringLen(nullptr, static_cast<UINT>(text.size()));
    if (string == nullptr) throw comError(E_OUTOFMEMORY);
    std::copy(text.begin(), text.end(), string);
    return string;
}

base::Text textOf(BSTR string) {
    return {string, string + SysStringLen(string)};  // a null pointer means empty text
}

SAFEARRAY* newArray(const base::Bytes& bytes) {
    SAFEARRAY* array = SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(bytes.size()));
    if (array == nullptr) throw comError(E_OUTOFMEMORY);
    std::copy(bytes.begin(), bytes.end(), static_cast<std::uint8_t*>(array->pvData));
    return array;
}

base::Bytes bytesOf(const SAFEARRAY* array) {
    if (array == nullptr) return {};
    if (array->cDims != 1) throw typeMismatch();
    const auto* begin = static_cast<const std::uint8_t*>(array->pvData);
    return {begin, begin + array->rgsabound[0].cElements};
}

base::Value valueOf(const DECIMAL& decimal) {
    return base::Decimal{decimal.sign != 0, decimal.scale, {decimal.Lo32, decimal.Mid32, decimal.Hi32, 0}};
}

base::Value wholeNumber(bool negative, std::uint64_t magnitude) {
    constexpr std::uint64_t kMax = std::numeric_limits<std::int32_t>::max();
    if (magnitude <= kMax)
        return static_cast<std::int32_t>(negative ? -static_cast<std::int64_t>(magnitude)
                                                  : static_cast<std::int64_t>(magnitude));
    if (negative && magnitude == kMax + 1) return std::numeric_limits<std::int32_t>::min();
    const auto low = static_cast<std::uint32_t>(magnitude);
    return base::Decimal{negative, 0, {low, static_cast<std::uint32_t>(magnitude >> 32U), 0, 0}};
}

base::Value wholeNumber(std::int64_t number) {
    const auto bits = static_cast<std::uint64_t>(number);
    return number < 0 ? wholeNumber(true, 0 - bits) : wholeNumber(false, bits);
}

/// Puts each alternative of base::Value into the right kind of VARIANT.
struct Filler {
    VARIANT& variant;

    void operator()(base::Null) const { variant.vt = VT_NULL; }
    void operator()(bool value) const {
        variant.boolVal = value ? VARIANT_TRUE : VARIANT_FALSE;
        variant.vt = VT_BOOL;
    }
    void operator()(std::uint8_t value) const {
        variant.bVal = value;
        variant.vt = VT_UI1;
    }
    void operator()(std::int16_t value) const {
        variant.iVal = value;
        variant.vt = VT_I2;
    }
    void operator()(std::int32_t value) const {
        variant.lVal = value;
        variant.vt = VT_I4;
    }
    void operator()(base::Currency value) const {
        variant.cyVal.int64 = value.tenThousandths;
        variant.vt = VT_CY;
    }
    void operator()(float value) const {
        variant.fltVal = value;
        variant.vt = VT_R4;
    }
    void operator()(double value) const {
        variant.dblVal = value;
        variant.vt = VT_R8;
    }
    void operator()(base::Date value) const {
        variant.date = value.days;
        variant.vt = VT_DATE;
    }
    void operator()(const base::Text& value) const {
        variant.bstrVal = newString(value);
        variant.vt = VT_BSTR;
    }
    void operator()(const base::Bytes& value) const {
        variant.parray = newArray(value);
        variant.vt = VT_ARRAY | VT_UI1;
    }
    void operator()(const base::Guid& value) const {
        variant.bstrVal = newString(bracedText(value));
        variant.vt = VT_BSTR;
    }
    void operator()(const base::Decimal& value) const {
        variant.decVal = decimalOf(value);
        variant.vt = VT_DECIMAL;  // set last, because vt is inside the decimal's memory
    }
};

}  // namespace

Variant::Variant(Variant&& other) noexcept : variant_(std::exchange(other.variant_, {})) {}

Variant& Variant::operator=(Variant&& other) noexcept {
    std::swap(variant_, other.variant_);
    return *this;
}

Variant::~Variant() {
    VariantClear(&variant_);
}

Variant::Variant(const base::Value& value) {
    std::visit(Filler{variant_}, value);
}

Variant::Variant(base::TextView text) {
    variant_.bstrVal = newString(text);
    variant_.vt = VT_BSTR;
}

Variant::Variant(std::int32_t number) {
    Filler{variant_}(number);
}

Variant::Variant(IDispatch* object) {
    object->AddRef();
    variant_.pdispVal = object;
    variant_.vt = VT_DISPATCH;
}

base::Value Variant::value() const {
    switch (variant_.vt) {
        case VT_EMPTY:
        case VT_NULL:
            return base::Null{};
        case VT_BOOL:
            return variant_.boolVal != VARIANT_FALSE;
        case VT_UI1:
            return variant_.bVal;
        case VT_I1:
            return std::int16_t{variant_.cVal};
        case VT_I2:
            return variant_.iVal;
        case VT_UI2:
            return std::int32_t{variant_.uiVal};
        case VT_I4:
        case VT_INT:
            return std::int32_t{variant_.lVal};
        case VT_UI4:
        case VT_UINT:
            return wholeNumber(false, variant_.ulVal);
        case VT_I8:
            return wholeNumber(variant_.llVal);
        case VT_UI8:
            return wholeNumber(false, variant_.ullVal);
        case VT_CY:
            return base::Currency{variant_.cyVal.int64};
        case VT_R4:
            return variant_.fltVal;
        case VT_R8:
            return variant_.dblVal;
        case VT_DATE:
            return base::Date{variant_.date};
        case VT_BSTR:
            return textOf(variant_.bstrVal);
        case VT_DECIMAL:
            return valueOf(variant_.decVal);
        case VT_ARRAY | VT_UI1:
            return bytesOf(variant_.parray);
        default:
            throw typeMismatch();
    }
}

std::int32_t Variant::int32() const {
    return convertedTo(VT_I4).variant_.lVal;
}

bool Variant::boolean() const {
    return convertedTo(VT_BOOL).variant_.boolVal != VARIANT_FALSE;
}

base::Text Variant::text() const {
    return textOf(convertedTo(VT_BSTR).variant_.bstrVal);
}

IDispatch* Variant::object() const {
    if (variant_.vt != VT_DISPATCH || variant_.pdispVal == nullptr) throw typeMismatch();
    return variant_.pdispVal;
}

Variant Variant::convertedTo(VARTYPE type) const {
    Variant converted;
    VARIANT borrowed = variant_;
    requireSuccess(VariantChangeType(converted.out(), &borrowed, 0, type));
    return converted;
}

DECIMAL decimalOf(const base::Decimal& value) {
    DECIMAL decimal{};
    if (value.magnitude[3] != 0) throw base::runtimeError(base::RuntimeErrorNumber::Overflow);
    decimal.scale = value.scale;
    decimal.sign = value.negative ? DECIMAL_NEG : 0;
    decimal.Lo32 = value.magnitude[0];
    decimal.Mid32 = value.magnitude[1];
    decimal.Hi32 = value.magnitude[2];
    return decimal;
}

base::Text bracedText(const base::Guid& guid) {
    GUID id{};
    static_assert(sizeof id == sizeof guid.bytes);
    std::memcpy(&id, guid.bytes.data(), sizeof id);
    wchar_t units[39];
    const int size = StringFromGUID2(id, units, int{std::size(units)});
    return {units, units + size - 1};
}

}  // namespace ado::com
