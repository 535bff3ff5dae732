#include "tests/wine/probe/Windows.h"

#include <array>
#include <bit>
#include <set>
#include <vector>

namespace probe {
namespace {

constexpr UINT kAnswerMilliseconds = 1000;

DWORD_PTR ask(HWND window, UINT message, WPARAM wParam = 0) {
    DWORD_PTR answer = 0;
    SendMessageTimeoutW(window, message, wParam, 0, SMTO_ABORTIFHUNG, kAnswerMilliseconds, &answer);
    return answer;
}

void rectangle(Json& json, std::string_view name, const RECT& rect) {
    json.key(name).begin('[').value(rect.left).value(rect.top).value(rect.right).value(rect.bottom).end(']');
}

void describeOne(Json& json, HWND window, HWND focus) {
    const std::wstring text = textOf(window);
    RECT rect{};
    GetWindowRect(window, &rect);
    RECT client{};
    GetClientRect(window, &client);
    json.field("handle", reinterpret_cast<std::uintptr_t>(window))
        .field("id", static_cast<int>(GetWindowLongPtrW(window, GWLP_ID)))
        .field("class", classOf(window))
        .field("text", text)
        .field("style", static_cast<unsigned>(GetWindowLongPtrW(window, GWL_STYLE)))
        .field("enabled", IsWindowEnabled(window) != 0)
        .field("visible", IsWindowVisible(window) != 0)
        .field("focus", window == focus)
        .field("dpi", GetDpiForWindow(window));
    rectangle(json, "rect", rect);
    POINT origin{};
    ClientToScreen(window, &origin);
    json.key("client").begin('[').value(origin.x).value(origin.y).value(client.right).value(client.bottom).end(']');
    const std::wstring name = classOf(window);
    if (name == L"Button") json.field("checked", ask(window, BM_GETCHECK) == BST_CHECKED);
    if (name == L"Edit") json.field("passwordChar", static_cast<int>(ask(window, EM_GETPASSWORDCHAR)));
}

std::wstring exeOf(DWORD process) {
    std::array<wchar_t, 1024> path{};
    auto length = static_cast<DWORD>(path.size());
    HANDLE handle = OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, process);
    if (handle == nullptr) return {};
    if (QueryFullProcessImageNameW(handle, 0, path.data(), &length) == 0) length = 0;
    CloseHandle(handle);
    const std::wstring whole(path.data(), length);
    return whole.substr(whole.find_last_of(L'\\') + 1);
}

struct Search {
    Json& json;
    const std::wstring& exeName;
};

BOOL CALLBACK describeIfOf(HWND window, LPARAM parameter) {
    const auto& search = *std::bit_cast<const Search*>(parameter);
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    if (!IsWindowVisible(window) || lstrcmpiW(exeOf(process).c_str(), search.exeName.c_str()) != 0) return TRUE;
    RECT rect{};
    GetWindowRect(window, &rect);
    search.json.begin('{')
        .field("handle", reinterpret_cast<std::uintptr_t>(window))
        .field("class", classOf(window))
        .field("text", textOf(window))
        .field("owner", reinterpret_cast<std::uintptr_t>(GetWindow(window, GW_OWNER)))
        .field("enabled", IsWindowEnabled(window) != 0)
        .field("front", window == GetForegroundWindow());
    rectangle(search.json, "rect", rect);
    search.json.end('}');
    return TRUE;
}

/// The colours of a rectangle of pixels, row by row, as 0x00RRGGBB. `paint` draws into the memory device context.
template <class Paint>
std::vector<std::uint32_t> pixels(int width, int height, Paint&& paint) {
    BITMAPINFO info{};
    info.bmiHeader = {sizeof info.bmiHeader, width, -height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    void* bits = nullptr;
    HDC memory = CreateCompatibleDC(nullptr);
    HBITMAP bitmap = CreateDIBSection(memory, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    HGDIOBJ former = SelectObject(memory, bitmap);
    paint(memory);
    GdiFlush();
    const auto* first = static_cast<const std::uint32_t*>(bits);
    std::vector<std::uint32_t> colours(first, first + static_cast<std::ptrdiff_t>(width) * height);
    for (std::uint32_t& colour : colours)
        colour &= 0xFFFFFFU;
    SelectObject(memory, former);
    DeleteObject(bitmap);
    DeleteDC(memory);
    return colours;
}

std::vector<std::uint32_t> screenPixels(const RECT& place) {
    const int width = place.right - place.left;
    const int height = place.bottom - place.top;
    return pixels(width, height, [&](HDC memory) {
        HDC screen = GetDC(nullptr);
        BitBlt(memory, 0, 0, width, height, screen, place.left, place.top, SRCCOPY);
        ReleaseDC(nullptr, screen);
    });
}

/// Name of the system icon that is drawn at this place of the screen; an icon's handle is useless in another process.
std::string_view iconShownAt(const RECT& place) {
    struct Candidate {
        std::string_view name;
        LPCWSTR resource;
    };
    const std::array<Candidate, 4> candidates = {{{"critical", IDI_ERROR},
                                                  {"question", IDI_QUESTION},
                                                  {"warning", IDI_WARNING},
                                                  {"information", IDI_INFORMATION}}};
    const int side = place.right - place.left;
    if (side <= 0 || side > 256) return "none";
    const auto shown = screenPixels({place.left, place.top, place.left + side, place.top + side});
    std::string_view best = "other";
    std::size_t fewest = shown.size() / 10;  // a tenth of the pixels may differ: edges are drawn half transparent
    for (const Candidate& candidate : candidates) {
        const auto drawn = pixels(side, side, [&](HDC memory) {
            const RECT all = {0, 0, side, side};
            FillRect(memory, &all, GetSysColorBrush(COLOR_3DFACE));
            DrawIconEx(memory, 0, 0, LoadIconW(nullptr, candidate.resource), side, side, 0, nullptr, DI_NORMAL);
        });
        std::size_t different = 0;
        for (std::size_t i = 0; i < shown.size(); ++i)
            different += shown[i] != drawn[i] ? 1U : 0U;
        if (different < fewest) {
            fewest = different;
            best = candidate.name;
        }
    }
    return best;
}

}  // namespace

std::wstring textOf(HWND window) {
    DWORD_PTR length = 0;
    if (SendMessageTimeoutW(window, WM_GETTEXTLENGTH, 0, 0, SMTO_ABORTIFHUNG, kAnswerMilliseconds, &length) == 0) {
        return {};
    }
    std::wstring text(length + 1, L'\0');
    DWORD_PTR copied = 0;
    SendMessageTimeoutW(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()), SMTO_ABORTIFHUNG,
                        kAnswerMilliseconds, &copied);
    text.resize(copied);
    return text;
}

std::wstring classOf(HWND window) {
    std::array<wchar_t, 256> name{};
    const int length = GetClassNameW(window, name.data(), static_cast<int>(name.size()));
    return {name.data(), static_cast<std::size_t>(length)};
}

void describeWindows(Json& json, const std::wstring& exeName) {
    Search search{json, exeName};
    json.begin('[');
    EnumWindows(describeIfOf, reinterpret_cast<LPARAM>(&search));
    json.end(']');
}

void describeTree(Json& json, HWND window) {
    GUITHREADINFO thread{};
    thread.cbSize = sizeof thread;
    GetGUIThreadInfo(GetWindowThreadProcessId(window, nullptr), &thread);
    json.begin('{');
    describeOne(json, window, thread.hwndFocus);
    json.key("children").begin('[');
    for (HWND child = GetWindow(window, GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
        json.begin('{');
        describeOne(json, child, thread.hwndFocus);
        json.end('}');
    }
    json.end(']').end('}');
}

std::size_t coloursIn(const RECT& place) {
    if (place.right <= place.left || place.bottom <= place.top) return 0;
    const auto colours = screenPixels(place);
    return std::set<std::uint32_t>(colours.begin(), colours.end()).size();
}

void describeBox(Json& json, HWND window) {
    constexpr int kTextId = 0xFFFF;
    constexpr int kIconId = 1088;
    json.begin('{').field("title", textOf(window)).field("text", textOf(GetDlgItem(window, kTextId)));
    const HWND owner = GetWindow(window, GW_OWNER);
    json.field("owner", reinterpret_cast<std::uintptr_t>(owner)).field("ownerEnabled", IsWindowEnabled(owner) != 0);
    RECT icon{};
    GetWindowRect(GetDlgItem(window, kIconId), &icon);
    json.field("icon", iconShownAt(icon)).key("buttons").begin('[');
    for (HWND child = GetWindow(window, GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
        if (classOf(child) != L"Button" || !IsWindowVisible(child)) continue;
        json.begin('[').value(static_cast<int>(GetWindowLongPtrW(child, GWLP_ID))).value(textOf(child)).end(']');
    }
    json.end(']').end('}');
}

}  // namespace probe
