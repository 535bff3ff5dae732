/// Reads and reports what another program's windows show, for the tests of the real windows.
///
/// Reads commands from standard input, one on each line with tabs between the words, and answers each in turn with one
/// line of JSON. Handles are decimal. Texts are UTF-8. Coordinates are those of the screen.
#include <array>
#include <bit>
#include <fcntl.h>
#include <functional>
#include <io.h>
#include <iostream>
#include <map>
#include <sstream>
#include <stdexcept>

#include "tests/wine/probe/Probe.h"

namespace probe {
namespace {

constexpr UINT kAnswerMilliseconds = 1000;

DWORD_PTR ask(HWND window, UINT message, WPARAM wParam = 0, LPARAM lParam = 0) {
    DWORD_PTR answer = 0;
    SendMessageTimeoutW(window, message, wParam, lParam, SMTO_ABORTIFHUNG, kAnswerMilliseconds, &answer);
    return answer;
}

std::wstring textOf(HWND window) {
    std::wstring text(ask(window, WM_GETTEXTLENGTH) + 1, L'\0');
    text.resize(ask(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data())));
    return text;
}

std::wstring classOf(HWND window) {
    std::array<wchar_t, 256> name{};
    const int length = GetClassNameW(window, name.data(), static_cast<int>(name.size()));
    return {name.data(), static_cast<std::size_t>(length)};
}

std::wstring exeOf(HWND window) {
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    std::array<wchar_t, 1024> path{};
    auto length = static_cast<DWORD>(path.size());
    HANDLE handle = OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, process);
    if (QueryFullProcessImageNameW(handle, 0, path.data(), &length) == 0) length = 0;
    CloseHandle(handle);
    const std::wstring whole(path.data(), length);
    return whole.substr(whole.find_last_of(L'\\') + 1);
}

std::vector<HWND> childrenOf(HWND window) {
    std::vector<HWND> children;
    for (HWND child = GetWindow(window, GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT))
        children.push_back(child);
    return children;
}

/// One window, with its place on the screen and that of its client area (place, width, height), and its children in
/// native order.
Json treeOf(HWND window) {
    GUITHREADINFO thread{};
    thread.cbSize = sizeof thread;
    GetGUIThreadInfo(GetWindowThreadProcessId(window, nullptr), &thread);
    RECT rect{};
    GetWindowRect(window, &rect);
    RECT client{};
    GetClientRect(window, &client);
    ClientToScreen(window, reinterpret_cast<POINT*>(&client));
    const std::wstring name = classOf(window);
    std::vector<Json> children;
    for (HWND child : childrenOf(window))
        children.push_back(treeOf(child));
    return object({{"handle", handle(window)},
                   {"owner", handle(GetWindow(window, GW_OWNER))},
                   {"id", std::to_string(GetWindowLongPtrW(window, GWLP_ID))},
                   {"class", text(name)},
                   {"text", text(textOf(window))},
                   {"style", std::to_string(static_cast<unsigned>(GetWindowLongPtrW(window, GWL_STYLE)))},
                   {"enabled", flag(IsWindowEnabled(window) != 0)},
                   {"front", flag(window == GetForegroundWindow())},
                   {"focus", flag(window == thread.hwndFocus)},
                   {"rect", rectangle(rect)},
                   {"client", rectangle(client)},
                   {"checked", flag(name == L"Button" && ask(window, BM_GETCHECK) == BST_CHECKED)},
                   {"passwordChar", std::to_string(name == L"Edit" ? ask(window, EM_GETPASSWORDCHAR) : 0)},
                   {"children", array(children)}});
}

/// The visible top-level windows of all processes that run the exe with this name (without folder).
Json windowsOf(const std::wstring& exeName) {
    std::vector<Json> found;
    for (HWND window : childrenOf(GetDesktopWindow())) {
        if (IsWindowVisible(window) && lstrcmpiW(exeOf(window).c_str(), exeName.c_str()) == 0)
            found.push_back(treeOf(window));
    }
    return array(found);
}

std::wstring wide(const std::string& utf8) {
    const base::Text text = base::fromUtf8(utf8);
    return {text.begin(), text.end()};
}

/// Types characters that the keyboard layout lacks, as real key events to the window in front.
Json type(const std::wstring& text) {
    std::vector<INPUT> inputs;
    for (const wchar_t unit : text) {
        INPUT input{};
        input.type = INPUT_KEYBOARD;
        input.ki.wScan = unit;
        for (const DWORD flags : {KEYEVENTF_UNICODE, KEYEVENTF_UNICODE | KEYEVENTF_KEYUP}) {
            input.ki.dwFlags = flags;
            inputs.push_back(input);
        }
    }
    return std::to_string(SendInput(static_cast<UINT>(inputs.size()), inputs.data(), sizeof(INPUT)));
}

/// The words of one command. A number that is left out is 0.
class Words {
public:
    explicit Words(const std::string& line) {
        std::istringstream stream(line);
        for (std::string word; std::getline(stream, word, '\t');)
            words_.push_back(word);
    }
    const std::string& operator[](std::size_t index) const { return words_.at(index); }
    long long number(std::size_t index) const { return index < words_.size() ? std::stoll(words_[index]) : 0; }
    int whole(std::size_t index) const { return static_cast<int>(number(index)); }
    HWND window() const { return std::bit_cast<HWND>(static_cast<std::uintptr_t>(number(1))); }

private:
    std::vector<std::string> words_;
};

const std::map<std::string, std::function<Json(const Words&)>> kCommands = {
    {"windows", [](const Words& with) { return windowsOf(wide(with[1])); }},
    {"tree", [](const Words& with) { return treeOf(with.window()); }},
    {"list", [](const Words& with) { return listOf(with.window(), with.whole(2), with.whole(3)); }},
    {"colours",
     [](const Words& with) {
         return coloursIn({with.whole(1), with.whole(2), with.whole(3), with.whole(4)});
     }},
    {"icon",
     [](const Words& with) {
         return iconShownAt({with.whole(1), with.whole(2), with.whole(3), with.whole(4)});
     }},
    {"type", [](const Words& with) { return type(wide(with[1])); }},
    // Gives the window another size, as a window manager does; the window's own smallest size is respected. (Wine's
    // display driver lets the display's window manager shrink a window below it, so dragging the frame would prove
    // nothing.)
    {"resize",
     [](const Words& with) {
         return flag(SetWindowPos(with.window(), nullptr, 0, 0, with.whole(2), with.whole(3),
                                  SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE) != 0);
     }},
    // A message from another program: WINDOW MESSAGE [WPARAM [LPARAM]]
    {"post",
     [](const Words& with) {
         return flag(PostMessageW(with.window(), static_cast<UINT>(with.whole(2)), static_cast<WPARAM>(with.number(3)),
                                  static_cast<LPARAM>(with.number(4))) != 0);
     }},
    {"send",
     [](const Words& with) {
         return std::to_string(SendMessageW(with.window(), static_cast<UINT>(with.whole(2)),
                                            static_cast<WPARAM>(with.number(3)), static_cast<LPARAM>(with.number(4))));
     }},
    // How many of the double's objects the exe with the double behind COM still holds
    // (tests/comdouble/EngineThroughCom.cpp).
    {"held",
     [](const Words&) {
         const HWND window = FindWindowExW(HWND_MESSAGE, nullptr, L"comdouble", nullptr);
         return window == nullptr ? text(L"no such window") : std::to_string(SendMessageW(window, WM_APP, 0, 0));
     }},
};

}  // namespace
}  // namespace probe

int main() {
    SetProcessDpiAwarenessContext(DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE_V2);
    _setmode(_fileno(stdin), _O_BINARY);
    _setmode(_fileno(stdout), _O_BINARY);
    for (std::string line; std::getline(std::cin, line);) {
        const probe::Words words(line);
        std::cout << probe::kCommands.at(words[0])(words) << std::endl;
    }
    return 0;
}
