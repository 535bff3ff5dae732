#include "tools/kontodb/PasswordPrompt.h"

#include <csignal>
#include <string>
#include <utility>

#include "tools/kontodb/Signals.h"

#ifdef _WIN32
#include <conio.h>
#include <windows.h>
#else
#include <termios.h>
#include <unistd.h>
#endif

namespace kontodb {

#ifdef _WIN32

/// Asks the system whether there is a console: for the C runtime the null device is a terminal, too.
bool isInputTerminal() {
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(STD_INPUT_HANDLE), &mode) != 0;
}

std::optional<base::Text> readHiddenLine() {
    constexpr wint_t endOfInput = 0x1A;
    constexpr wint_t controlC = 0x03;  // arrives as a character here
    base::Text line;
    for (wint_t unit = _getwch(); unit != L'\r' && unit != L'\n'; unit = _getwch()) {
        if (unit == controlC) throw Interrupted{SIGINT};
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

std::optional<base::Text> readLine(const Interruption& interruption) {
    std::string line;
    char unit = 0;
    while (interruption.waitForInput(STDIN_FILENO) && read(STDIN_FILENO, &unit, 1) == 1) {
        if (unit == '\n') return base::fromUtf8(line);
        line += unit;
    }
    return std::nullopt;
}

struct Answer {
    std::optional<base::Text> line;
    int signal;  ///< that interrupted it; 0 for none
};

/// Makes the terminal show typed text again before the signal is reported.
Answer ask() {
    const Interruption interruption({SIGTSTP});
    const HiddenInput hidden;
    auto line = readLine(interruption);
    return {std::move(line), Interruption::signal()};
}

}  // namespace

bool isInputTerminal() {
    return isatty(STDIN_FILENO) != 0;
}

std::optional<base::Text> readHiddenLine() {
    while (true) {
        auto [line, signal] = ask();
        if (signal == 0) return line;
        if (signal != SIGTSTP) throw Interrupted{signal};
        std::raise(signal);  // stops here; asks once more when the program goes on
    }
}

#endif

}  // namespace kontodb
