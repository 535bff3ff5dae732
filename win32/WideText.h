#pragma once

#include <string>
#include <string_view>

#include "base/Text.h"
#include "win32/SystemHeaders.h"

/// Converts between base::Text and the two forms of text that Windows uses: UTF-16 in wchar_t, and the ANSI code page.
namespace win32 {

inline std::wstring toWide(base::TextView text) {
    return {text.begin(), text.end()};
}

inline base::Text fromWide(std::wstring_view text) {
    return {text.begin(), text.end()};
}

/// A character that the code page lacks becomes its default character.
std::string toAnsi(base::TextView text);
base::Text fromAnsi(std::string_view bytes);

/// The text of a window.
base::Text textOf(HWND window);

}  // namespace win32
