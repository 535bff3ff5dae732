#include "tools/kontodb/PasswordPrompt.h"

#include <string>

#ifdef _WIN32
#include <conio.h>
#include <windows.h>
#else
#include <termios.h>
#include <unistd.h>
#endif

namespace kontodb {

#ifdef _WIN32

/// Asks for the console itself: the C runtime takes the null device for a terminal too.
bool isInputTerminal() {
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(STD_INPUT_HANDLE), &mode) != 0;
}

std::optional<base::Text> readHiddenLine() {
    constexpr wint_t endOfInput = 0x1A;
    base::Text line;
    for (wint_t unit = _getwch(); unit != L'\r' && unit != L'\n'; unit = _getwch()) {
        if (unit == endOfInput || unit == WEOF) return std::nullopt;
        if (unit != L'\b')
            line.push_back(static_cast<char16_t>(unit));
        else if (!line.empty())
            line.pop_back();
    }
    return line;
}

#else

namespace {

/// The terminal shows nothing of what is typed, for as long as this lives.
class HiddenInput {
public:
    HiddenInput() : works_(tcgetattr(STDIN_FILENO, &before_) == 0) {
        termios hidden = before_;
        hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        if (works_) tcsetattr(STDIN_FILENO, TCSAFLUSH, &hidden);
    }
    HiddenInput(const HiddenInput&) = delete;
    HiddenInput& operator=(const HiddenInput&) = delete;
    ~HiddenInput() {
        if (works_) tcsetattr(STDIN_FILENO, TCSAFLUSH, &before_);
    }

private:
    termios before_{};
    bool works_;
};

}  // namespace

bool isInputTerminal() {
    return isatty(STDIN_FILENO) != 0;
}

std::optional<base::Text> readHiddenLine() {
    const HiddenInput hidden;
    std::string line;
    char unit = 0;
    while (read(STDIN_FILENO, &unit, 1) == 1) {
        if (unit == '\n') return base::fromUtf8(line);
        line += unit;
    }
    return std::nullopt;
}

#endif

}  // namespace kontodb
