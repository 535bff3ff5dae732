#pragma once

#include <new>

#include "base/RuntimeError.h"
#include "base/Text.h"
#include "win32/SystemHeaders.h"

/// How every failure ends: the run-time error box, then the end of the process.
namespace win32 {

/// Number and description as the box shows them. Large numbers, which come from providers, are followed by their
/// hexadecimal form.
base::Text errorBoxText(const base::RuntimeError& error);

/// The program's active visible window; null if there is none. Boxes belong to it.
HWND frontWindow();

/// Shows the box and then ends the process: no unload handler runs and nothing is written.
[[noreturn]] void endWithErrorBox(const base::RuntimeError& error);

/// True from the moment the error box is made: after that no input reaches the forms.
bool isEnding();

/// The boundary between the system's calls and our code: no exception leaves it. Every window procedure and the
/// program's start run their work inside it.
template <class Action>
auto atBoundary(Action&& action) -> decltype(action()) {
    try {
        return action();
    } catch (const base::RuntimeError& error) {
        endWithErrorBox(error);
    } catch (const std::bad_alloc&) {
        endWithErrorBox({7, u"Nicht genügend Speicher"});
    }
}

/// Makes failures that no boundary can catch end in the box, too: those of destructors, such as an error when the
/// connection is closed at the end.
void coverTermination();

}  // namespace win32
