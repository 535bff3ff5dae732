#include "win32/SystemRegional.h"

#include <cstdio>
#include <type_traits>

#include "ado/com/Variant.h"
#include "base/RuntimeError.h"
#include "win32/Handles.h"
#include "win32/SystemHeaders.h"
#include "win32/WideText.h"

namespace win32 {

namespace {

using base::RuntimeErrorNumber;

// Enough for nearly every sort key: two bytes for a letter, one more for its accent, and the separators.
constexpr std::size_t kUsualKeyBytesPerUnit = 4;
constexpr std::size_t kUsualKeyBytes = 32;

void freeText(BSTR text) {
    SysFreeString(text);
}
using AutomationText = Owned<BSTR, freeText>;

void check(HRESULT result) {
    if (SUCCEEDED(result)) return;
    throw base::runtimeError(result == DISP_E_OVERFLOW ? RuntimeErrorNumber::Overflow
                                                       : RuntimeErrorNumber::TypeMismatch);
}

/// The text that one of the VarBstrFrom... functions makes from a number or date.
template <class Function, class Source>
base::Text converted(Function function, Source source) {
    BSTR made = nullptr;
    check(function(source, LOCALE_USER_DEFAULT, 0, &made));
    const AutomationText text(made);
    return fromWide({made, SysStringLen(made)});
}

base::Text textOfValue(const base::Value& value) {
    return std::visit(
        [](const auto& v) -> base::Text {
            using Type = std::decay_t<decltype(v)>;
            if constexpr (std::is_same_v<Type, base::Null>) {
                throw base::runtimeError(RuntimeErrorNumber::InvalidUseOfNull);
            } else if constexpr (std::is_same_v<Type, bool>) {
                return v ? u"Wahr" : u"Falsch";
            } else if constexpr (std::is_integral_v<Type>) {
                return base::decimal(v);
            } else if constexpr (std::is_same_v<Type, base::Currency>) {
                CY amount{};
                amount.int64 = v.tenThousandths;
                return converted(VarBstrFromCy, amount);
            } else if constexpr (std::is_same_v<Type, float>) {
                return converted(VarBstrFromR4, v);
            } else if constexpr (std::is_same_v<Type, double>) {
                return converted(VarBstrFromR8, v);
            } else if constexpr (std::is_same_v<Type, base::Date>) {
                return converted(VarBstrFromDate, v.days);
            } else if constexpr (std::is_same_v<Type, base::Text>) {
                return v;
            } else if constexpr (std::is_same_v<Type, base::Guid>) {
                return ado::com::bracedText(v);
            } else if constexpr (std::is_same_v<Type, base::Decimal>) {
                DECIMAL decimal = ado::com::decimalOf(v);
                return converted(VarBstrFromDec, &decimal);
            } else {
                throw base::runtimeError(RuntimeErrorNumber::TypeMismatch);
            }
        },
        value);
}

}  // namespace

base::Text SystemRegional::toText(const base::Value& value) const {
    return textOfValue(value);
}

std::int32_t SystemRegional::toLong(base::TextView text) const {
    LONG number = 0;
    check(VarI4FromStr(toWide(text).data(), LOCALE_USER_DEFAULT, 0, &number));
    return number;
}

std::optional<base::Text> SystemRegional::toSortableDate(base::TextView text) const {
    DATE date = 0;
    SYSTEMTIME parts{};
    if (FAILED(VarDateFromStr(toWide(text).data(), LOCALE_USER_DEFAULT, 0, &date)) ||
        VariantTimeToSystemTime(date, &parts) == FALSE) {
        return std::nullopt;
    }
    char sortable[32] = "";
    std::snprintf(sortable, sizeof sortable, "%04d%02d%02d", parts.wYear, parts.wMonth, parts.wDay);
    return base::fromUtf8(sortable);
}

int SystemRegional::compare(base::TextView a, base::TextView b) const {
    // An empty view may have a null address, which the system refuses.
    if (a.empty() || b.empty()) return static_cast<int>(!a.empty()) - static_cast<int>(!b.empty());
    return CompareStringEx(LOCALE_NAME_USER_DEFAULT, NORM_IGNORECASE, reinterpret_cast<const wchar_t*>(a.data()),
                           static_cast<int>(a.size()), reinterpret_cast<const wchar_t*>(b.data()),
                           static_cast<int>(b.size()), nullptr, nullptr, 0) -
           CSTR_EQUAL;
}

base::Bytes SystemRegional::sortKey(base::TextView text) const {
    if (text.empty()) return {};
    const auto make = [text](std::uint8_t* place, std::size_t sizeBytes) {
        const int count =
            LCMapStringEx(LOCALE_NAME_USER_DEFAULT, LCMAP_SORTKEY | NORM_IGNORECASE,
                          reinterpret_cast<const wchar_t*>(text.data()), static_cast<int>(text.size()),
                          reinterpret_cast<wchar_t*>(place), static_cast<int>(sizeBytes), nullptr, nullptr, 0);
        return static_cast<std::size_t>(count);
    };
    base::Bytes key(kUsualKeyBytesPerUnit * text.size() + kUsualKeyBytes);
    std::size_t sizeBytes = make(key.data(), key.size());
    if (sizeBytes == 0) {  // the buffer was too small
        key.resize(make(nullptr, 0));
        sizeBytes = make(key.data(), key.size());
    }
    key.resize(sizeBytes);
    return key;
}

}  // namespace win32
