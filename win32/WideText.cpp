#include "win32/WideText.h"

#include "win32/SystemHeaders.h"

namespace win32 {

std::string toAnsi(base::TextView text) {
    const std::wstring wide = toWide(text);
    const int units = static_cast<int>(wide.size());
    const int size = WideCharToMultiByte(CP_ACP, 0, wide.data(), units, nullptr, 0, nullptr, nullptr);
    std::string bytes(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_ACP, 0, wide.data(), units, bytes.data(), size, nullptr, nullptr);
    return bytes;
}

base::Text fromAnsi(std::string_view bytes) {
    const int count = static_cast<int>(bytes.size());
    const int size = MultiByteToWideChar(CP_ACP, 0, bytes.data(), count, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(size), L'\0');
    MultiByteToWideChar(CP_ACP, 0, bytes.data(), count, wide.data(), size);
    return fromWide(wide);
}

base::Text textOf(HWND window) {
    std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(window)) + 1, L'\0');
    text.resize(static_cast<std::size_t>(GetWindowTextW(window, text.data(), static_cast<int>(text.size()))));
    return fromWide(text);
}

}  // namespace win32
