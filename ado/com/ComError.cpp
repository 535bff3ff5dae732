#include "ado/com/ComError.h"

#include <string_view>

namespace ado::com {

namespace {

constexpr DWORD kAdoResultMask = 0xFFFF0000;
constexpr DWORD kAdoResult = 0x800A0000;

std::int32_t numberOf(SCODE result) {
    const auto bits = static_cast<DWORD>(result);
    return (bits & kAdoResultMask) == kAdoResult ? static_cast<std::int32_t>(bits & ~kAdoResultMask) : result;
}

/// The system's text, in the user's language.
base::Text systemText(SCODE result) {
    wchar_t units[512];
    const DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                        static_cast<DWORD>(result), 0, units, DWORD{std::size(units)}, nullptr);
    base::Text text(units, units + length);
    while (!text.empty() && text.back() <= u' ')
        text.pop_back();
    return text.empty() ? base::Text(u"Automatisierungsfehler") : text;
}

}  // namespace

ExceptionRecord::~ExceptionRecord() {
    SysFreeString(info_.bstrSource);
    SysFreeString(info_.bstrDescription);
    SysFreeString(info_.bstrHelpFile);
}

base::RuntimeError ExceptionRecord::error() {
    // If this fails, the missing parts are treated like any other missing part.
    if (info_.pfnDeferredFillIn != nullptr) info_.pfnDeferredFillIn(&info_);
    SCODE code = info_.scode;
    if (code == 0) code = info_.wCode;
    if (code == 0) code = DISP_E_EXCEPTION;
    const BSTR description = info_.bstrDescription;
    const UINT length = SysStringLen(description);
    return {numberOf(code), length > 0 ? base::Text(description, description + length) : systemText(code)};
}

base::RuntimeError comError(HRESULT result) {
    return {numberOf(result), systemText(result)};
}

}  // namespace ado::com
