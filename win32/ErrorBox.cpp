#include "win32/ErrorBox.h"

#include <cstdio>
#include <cstdlib>
#include <exception>

#include "app/mPublic.h"
#include "win32/WideText.h"

namespace win32 {

namespace {

bool ending = false;

BOOL CALLBACK keepVisible(HWND window, LPARAM found) {
    if (!IsWindowVisible(window)) return TRUE;
    *reinterpret_cast<HWND*>(found) = window;
    return FALSE;
}

[[noreturn]] void assertionFailed(const wchar_t* /*expression*/, const wchar_t* file, unsigned line) {
    endWithErrorBox({51, u"Interner Fehler (" + fromWide(file) + u", Zeile " + base::decimal(line) + u")"});
}

}  // namespace

#ifdef _WIN64
#define TOLV_IMPORTED_ASSERT "__imp__wassert"
#else
#define TOLV_IMPORTED_ASSERT "__imp___wassert"
#endif

/// What an assert calls, under the name by which it would be imported: the C runtime's own box offers to go on after a
/// failed assertion.
extern void (*const onFailedAssertion)(const wchar_t*, const wchar_t*, unsigned) asm(TOLV_IMPORTED_ASSERT);
void (*const onFailedAssertion)(const wchar_t*, const wchar_t*, unsigned) = assertionFailed;

base::Text errorBoxText(const base::RuntimeError& error) {
    base::Text number = base::decimal(error.number());
    if (error.number() < 0) {
        char hex[16] = "";
        std::snprintf(hex, sizeof hex, " (%08x)", static_cast<unsigned>(error.number()));
        number += base::fromUtf8(hex);
    }
    return u"Laufzeitfehler '" + number + u"':\r\n\r\n" + error.description();
}

HWND frontWindow() {
    HWND window = GetActiveWindow();
    if (window != nullptr && IsWindowVisible(window)) return window;
    window = nullptr;
    EnumThreadWindows(GetCurrentThreadId(), keepVisible, reinterpret_cast<LPARAM>(&window));
    return window;
}

void endWithErrorBox(const base::RuntimeError& error) {
    // A second failure, while the first one's box is shown, needs no box of its own.
    if (!ending) {
        ending = true;
        SetCursor(LoadCursorW(nullptr, IDC_ARROW));
        MessageBoxW(frontWindow(), toWide(errorBoxText(error)).c_str(), toWide(tolv::kApplicationTitle).c_str(),
                    MB_OK | MB_ICONERROR | MB_SETFOREGROUND);
    }
    ExitProcess(1);
}

bool isEnding() {
    return ending;
}

void coverTermination() {
    std::set_terminate([] {
        atBoundary([] {
            if (const auto failure = std::current_exception()) std::rethrow_exception(failure);
        });
        std::abort();
    });
}

}  // namespace win32
