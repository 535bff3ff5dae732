/// Reads and reports what another program's windows show, for the tests of the real windows.
///
///   probe COMMAND...     runs one command and prints its answer as one line of JSON
///   probe                reads commands from standard input, one on each line with tabs between the words, and answers
///                        each in turn: asking a running probe takes a millisecond, starting one a tenth of a second
///
/// Handles are decimal. Texts are UTF-8. Coordinates are those of the screen.
#include <bit>
#include <cstdio>
#include <fcntl.h>
#include <io.h>
#include <iostream>
#include <string>
#include <vector>
#include <windows.h>

#include "base/Text.h"
#include "tests/wine/probe/ListProbe.h"
#include "tests/wine/probe/RemoteMemory.h"
#include "tests/wine/probe/Windows.h"

namespace probe {
namespace {

using Words = std::vector<std::string>;

HWND windowOf(const std::string& word) {
    return std::bit_cast<HWND>(static_cast<std::uintptr_t>(std::stoull(word)));
}

std::wstring wide(const std::string& utf8) {
    const base::Text text = base::fromUtf8(utf8);
    return {text.begin(), text.end()};
}

void windows(Json& json, const Words& words) {
    describeWindows(json, wide(words.at(1)));
}

void tree(Json& json, const Words& words) {
    describeTree(json, windowOf(words.at(1)));
}

void list(Json& json, const Words& words) {
    const bool range = words.size() > 3;
    describeList(json, windowOf(words.at(1)), range ? std::stoi(words[2]) : 0, range ? std::stoi(words[3]) : 0);
}

void box(Json& json, const Words& words) {
    describeBox(json, windowOf(words.at(1)));
}

void pixel(Json& json, const Words& words) {
    HDC screen = GetDC(nullptr);
    const COLORREF colour = GetPixel(screen, std::stoi(words.at(1)), std::stoi(words.at(2)));
    ReleaseDC(nullptr, screen);
    json.begin('[').value(GetRValue(colour)).value(GetGValue(colour)).value(GetBValue(colour)).end(']');
}

void colours(Json& json, const Words& words) {
    json.value(
        coloursIn({std::stoi(words.at(1)), std::stoi(words.at(2)), std::stoi(words.at(3)), std::stoi(words.at(4))}));
}

/// Gives the window another size, as a window manager does; the window's own smallest size is respected. (Wine's
/// display driver lets the display's window manager shrink a window below it, so dragging the frame would prove
/// nothing.)
void resize(Json& json, const Words& words) {
    const BOOL done = SetWindowPos(windowOf(words.at(1)), nullptr, 0, 0, std::stoi(words.at(2)), std::stoi(words.at(3)),
                                   SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    json.value(done != 0);
}

/// Tells the window that it is now on a screen with another resolution, with its rectangle enlarged to match.
void dpi(Json& json, const Words& words) {
    const HWND window = windowOf(words.at(1));
    const int from = std::stoi(words.at(2));
    const int to = std::stoi(words.at(3));
    RemoteMemory memory(window, sizeof(RECT));
    RECT rect{};
    GetWindowRect(window, &rect);
    rect.right = rect.left + MulDiv(rect.right - rect.left, to, from);
    rect.bottom = rect.top + MulDiv(rect.bottom - rect.top, to, from);
    const bool sent = memory && memory.put(0, rect);
    if (sent) {
        SendMessageW(window, WM_DPICHANGED, static_cast<WPARAM>(MAKELONG(to, to)),
                     reinterpret_cast<LPARAM>(memory.at<void>(0)));
    }
    json.value(sent);
}

/// Sends a message from another program: WINDOW MESSAGE [WPARAM [LPARAM]]; posted, or sent and the result returned.
template <bool kIsPosted>
void message(Json& json, const Words& words) {
    const HWND window = windowOf(words.at(1));
    const auto code = static_cast<UINT>(std::stoul(words.at(2)));
    const auto wParam = static_cast<WPARAM>(words.size() > 3 ? std::stoull(words[3]) : 0);
    const auto lParam = static_cast<LPARAM>(words.size() > 4 ? std::stoll(words[4]) : 0);
    if (kIsPosted) {
        json.value(PostMessageW(window, code, wParam, lParam) != 0);
    } else {
        json.value(static_cast<long>(SendMessageW(window, code, wParam, lParam)));
    }
}

/// Types characters that the keyboard layout lacks, as real key events to the window in front.
void type(Json& json, const Words& words) {
    std::vector<INPUT> inputs;
    for (const wchar_t unit : wide(words.at(1))) {
        INPUT input{};
        input.type = INPUT_KEYBOARD;
        input.ki.wScan = unit;
        input.ki.dwFlags = KEYEVENTF_UNICODE;
        inputs.push_back(input);
        input.ki.dwFlags |= KEYEVENTF_KEYUP;
        inputs.push_back(input);
    }
    json.value(SendInput(static_cast<UINT>(inputs.size()), inputs.data(), sizeof(INPUT)));
}

/// Sets the user's text size, in percent of 9 points. A program that is already running sees it only on Windows itself.
void textSize(Json& json, const Words& words) {
    NONCLIENTMETRICSW metrics{};
    metrics.cbSize = sizeof metrics;
    SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0);
    metrics.lfMessageFont.lfHeight = -MulDiv(9 * std::stoi(words.at(1)), static_cast<int>(GetDpiForSystem()), 72 * 100);
    json.value(SystemParametersInfoW(SPI_SETNONCLIENTMETRICS, sizeof metrics, &metrics, 0) != 0);
}

/// How many of the double's objects the exe with the double behind COM still holds
/// (tests/comdouble/EngineThroughCom.cpp).
void held(Json& json, const Words& /*words*/) {
    const HWND window = FindWindowExW(HWND_MESSAGE, nullptr, L"comdouble", nullptr);
    if (window == nullptr) throw std::invalid_argument("nobody tells what is held");
    json.value(static_cast<long>(SendMessageW(window, WM_APP, 0, 0)));
}

std::string answer(const Words& words) {
    struct Command {
        std::string_view name;
        void (*run)(Json&, const Words&);
    };
    static constexpr Command kCommands[] = {
        {"windows", windows},    {"tree", tree},         {"list", list},     {"box", box},
        {"pixel", pixel},        {"colours", colours},   {"resize", resize}, {"dpi", dpi},
        {"type", type},          {"textsize", textSize}, {"held", held},     {"post", message<true>},
        {"send", message<false>}};
    Json json;
    try {
        for (const Command& command : kCommands) {
            if (command.name != words.at(0)) continue;
            command.run(json, words);
            return json.text();
        }
        throw std::invalid_argument("unknown command");
    } catch (const std::logic_error& error) {
        Json failure;
        return failure.begin('{').field("error", std::string_view(error.what())).end('}').text();
    }
}

Words split(const std::string& line) {
    Words words(1);
    for (const char c : line) {
        if (c == '\t') {
            words.emplace_back();
        } else if (c != '\r') {
            words.back() += c;
        }
    }
    return words;
}

}  // namespace
}  // namespace probe

int main(int argc, char** argv) {
    SetProcessDpiAwarenessContext(DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE_V2);
    _setmode(_fileno(stdout), _O_BINARY);
    if (argc > 1) {
        std::cout << probe::answer(probe::Words(argv + 1, argv + argc)) << std::endl;
        return 0;
    }
    std::string line;
    while (std::getline(std::cin, line))
        std::cout << probe::answer(probe::split(line)) << std::endl;
    return 0;
}
