#include "win32/FormPeer.h"

#include <algorithm>
#include <array>

#include "forms/Control.h"
#include "win32/ErrorBox.h"
#include "win32/PeerFactory.h"
#include "win32/WideText.h"

namespace win32 {

namespace {

constexpr DWORD kFixedStyle = WS_OVERLAPPED | WS_CAPTION | WS_SYSMENU | WS_CLIPCHILDREN;
constexpr DWORD kResizableStyle = WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN;
constexpr LPARAM kRepeatedKey = 1L << 30;

std::int16_t shiftState() {
    std::int16_t state = 0;
    if (GetKeyState(VK_SHIFT) < 0) state |= forms::Form::kShiftMask;
    if (GetKeyState(VK_CONTROL) < 0) state |= forms::Form::kCtrlMask;
    if (GetKeyState(VK_MENU) < 0) state |= forms::Form::kAltMask;
    return state;
}

using KeyStates = std::array<BYTE, 256>;

KeyStates presentKeys() {
    KeyStates keys{};
    GetKeyState(0);  // updates the states
    GetKeyboardState(keys.data());
    return keys;
}

/// Keeps the key states as they were while this lives. A handler of a key may have shown a box, and the user may have
/// released Ctrl meanwhile: the control would then get Ctrl+S as a letter.
class KeysAsThen {
public:
    explicit KeysAsThen(const KeyStates& then) : now_(presentKeys()), changed_(now_ != then) {
        KeyStates keys = then;
        if (changed_) SetKeyboardState(keys.data());
    }
    KeysAsThen(const KeysAsThen&) = delete;
    KeysAsThen& operator=(const KeysAsThen&) = delete;
    ~KeysAsThen() {
        if (changed_) SetKeyboardState(now_.data());
    }

private:
    KeyStates now_;
    bool changed_;
};

RECT workAreaOf(HMONITOR monitor) {
    MONITORINFO info{};
    info.cbSize = sizeof info;
    GetMonitorInfoW(monitor, &info);
    return info.rcWork;
}

RECT workAreaAtPointer() {
    POINT pointer{};
    GetCursorPos(&pointer);
    return workAreaOf(MonitorFromPoint(pointer, MONITOR_DEFAULTTONEAREST));
}

/// The part of the rectangle that fits into the area, moved so that nothing is outside.
RECT within(const RECT& area, const RECT& rect) {
    const LONG width = std::min(rect.right - rect.left, area.right - area.left);
    const LONG height = std::min(rect.bottom - rect.top, area.bottom - area.top);
    const LONG left = std::clamp(rect.left, area.left, area.right - width);
    const LONG top = std::clamp(rect.top, area.top, area.bottom - height);
    return {left, top, left + width, top + height};
}

Icon iconOfSize(int metric, unsigned dpi) {
    const int pixels = GetSystemMetricsForDpi(metric, dpi);
    return Icon(static_cast<HICON>(
        LoadImageW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(1), IMAGE_ICON, pixels, pixels, LR_DEFAULTCOLOR)));
}

}  // namespace

FormPeer::FormPeer(forms::Form& form) : form_(form), layout_(layoutOf(form)) {
    style_ = layout_.resizable ? kResizableStyle : kFixedStyle;
    makeWindow();
    makeControls();
    centre();
    form_.attachPeer(*this);
}

FormPeer::~FormPeer() {
    form_.detachPeer();
    for (forms::Control* control : form_.Controls())
        control->detachPeer();
    window_ = Window();  // before the controls, because it destroys their windows
}

void FormPeer::makeWindow() {
    WNDCLASSEXW windowClass{};
    windowClass.cbSize = sizeof windowClass;
    windowClass.lpfnWndProc = procedure;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    windowClass.hbrBackground = GetSysColorBrush(COLOR_BTNFACE);
    windowClass.lpszClassName = layout_.windowClass;
    RegisterClassExW(&windowClass);

    // On the right screen from the beginning, so that the window gets that screen's resolution.
    const RECT area = workAreaAtPointer();
    window_ = Window(CreateWindowExW(WS_EX_CONTROLPARENT, layout_.windowClass, toWide(form_.Caption()).c_str(), style_,
                                     area.left, area.top, 1, 1, nullptr, nullptr, windowClass.hInstance, nullptr));
    SetWindowLongPtrW(window(), GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    fonts_ = fontsOn(area, GetDpiForWindow(window()));
    showIcons();
}

void FormPeer::makeControls() {
    const auto all = form_.Controls();
    for (const Place& place : layout_.places) {
        const auto control =
            std::find_if(all.begin(), all.end(), [&](const forms::Control* c) { return c->Name() == place.control; });
        if (control == all.end()) continue;
        controls_.push_back(makePeer(**control, {window(), nativeId(**control), fonts_, place.spokenName}));
        // A new window is put in front of its siblings, but the table lists them from front to back.
        SetWindowPos(controls_.back()->window(), HWND_BOTTOM, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
    }
}

void FormPeer::showIcons() {
    bigIcon_ = iconOfSize(SM_CXICON, fonts_.dpi());
    smallIcon_ = iconOfSize(SM_CXSMICON, fonts_.dpi());
    SendMessageW(window(), WM_SETICON, ICON_BIG, reinterpret_cast<LPARAM>(bigIcon_.get()));
    SendMessageW(window(), WM_SETICON, ICON_SMALL, reinterpret_cast<LPARAM>(smallIcon_.get()));
}

Fonts FormPeer::fontsOn(const RECT& workArea, unsigned dpi) const {
    const SIZE frame = windowSize({0, 0}, dpi);
    return fontsFor(layout_, form_, dpi,
                    {workArea.right - workArea.left - frame.cx, workArea.bottom - workArea.top - frame.cy});
}

SIZE FormPeer::windowSize(SIZE client, unsigned dpi) const {
    RECT rect{0, 0, client.cx, client.cy};
    AdjustWindowRectExForDpi(&rect, style_, FALSE, WS_EX_CONTROLPARENT, dpi);
    return {rect.right - rect.left, rect.bottom - rect.top};
}

void FormPeer::centre() {
    const RECT area = workAreaAtPointer();
    const SIZE wanted = windowSize(firstClientSize(layout_, form_, fonts_.scale()), fonts_.dpi());
    const LONG left = (area.left + area.right - wanted.cx) / 2;
    const LONG top = (area.top + area.bottom - wanted.cy) / 2;
    moveTo(within(area, {left, top, left + wanted.cx, top + wanted.cy}));
    placeControls();
}

void FormPeer::moveTo(const RECT& rect) {
    SetWindowPos(window(), nullptr, rect.left, rect.top, rect.right - rect.left, rect.bottom - rect.top,
                 SWP_NOZORDER | SWP_NOACTIVATE);
}

void FormPeer::placeControls() {
    RECT client{};
    GetClientRect(window(), &client);
    HDWP move = BeginDeferWindowPos(static_cast<int>(controls_.size()));
    auto next = controls_.begin();
    for (const Place& place : layout_.places) {
        if (next == controls_.end() || (*next)->control().Name() != place.control) continue;
        const NativeControl& control = **next++;
        RECT rect = placeIn({client.right, client.bottom}, place, layout_, control.control(), fonts_.scale());
        const SIZE needed = control.neededSize();
        rect.right = std::max(rect.right, rect.left + needed.cx);
        rect.bottom = std::max(rect.bottom, rect.top + needed.cy);
        const LONG spare = rect.bottom - rect.top - control.fittingHeight();
        if (place.width != 0 && control.fittingHeight() != 0 && spare > 0) {
            rect.top += spare / 2;
            rect.bottom = rect.top + control.fittingHeight();
        }
        move = DeferWindowPos(move, control.window(), nullptr, rect.left, rect.top, rect.right - rect.left,
                              rect.bottom - rect.top, SWP_NOZORDER | SWP_NOACTIVATE);
    }
    EndDeferWindowPos(move);
    // A moved control keeps the pixels of its old place or is not painted: Wine leaves buttons and labels blank.
    RedrawWindow(window(), nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
}

void FormPeer::useFonts() {
    for (const auto& control : controls_)
        control->useFonts();
    placeControls();
}

void FormPeer::open() {
    ShowWindow(window(), SW_SHOW);
    SetForegroundWindow(window());
    focusActiveControl();
}

void FormPeer::close() {
    closed_ = true;
    ShowWindow(window(), SW_HIDE);
    // Wakes up a loop that waits for messages, in case this call comes from a sent message.
    PostMessageW(window(), WM_NULL, 0, 0);
}

bool FormPeer::preview(const MSG& message) {
    if (closed_ || isEnding()) return false;
    const KeyStates keys = presentKeys();
    if (message.message == WM_KEYDOWN || message.message == WM_SYSKEYDOWN) {
        form_.userPressedKey(static_cast<std::int16_t>(message.wParam), shiftState());
        if (closed_) return true;
    }
    if (message.message == WM_KEYDOWN && (message.wParam == VK_RETURN || message.wParam == VK_ESCAPE)) {
        // If the key is still held from a message box, it must not press the button that has the focus now.
        if ((message.lParam & kRepeatedKey) != 0) return true;
        if (message.wParam == VK_RETURN) {
            form_.userPressedEnter();
        } else {
            form_.userPressedEscape();
        }
        return true;
    }
    MSG copy = message;
    const KeysAsThen asThen(keys);
    return IsDialogMessageW(window(), &copy) != FALSE;
}

void FormPeer::show(forms::Property property) {
    if (property == forms::Property::Caption) SetWindowTextW(window(), toWide(form_.Caption()).c_str());
}

void FormPeer::takeFocus() {
    focusActiveControl();
}

void FormPeer::refresh() {
    UpdateWindow(window());
}

forms::NativeHandle FormPeer::handle() const {
    return reinterpret_cast<forms::NativeHandle>(window());
}

void FormPeer::focusActiveControl() {
    const forms::Control* active = form_.ActiveControl();
    if (active != nullptr && active->hWnd() != 0) SetFocus(reinterpret_cast<HWND>(active->hWnd()));
}

NativeControl* FormPeer::controlOf(HWND child) const {
    const auto found = std::find_if(controls_.begin(), controls_.end(),
                                    [&](const auto& control) { return control->window() == child; });
    return found != controls_.end() ? found->get() : nullptr;
}

void FormPeer::closedByUser() {
    if (!isEnding() && !closed_) form_.userClosed();
}

void FormPeer::dpiChanged(unsigned dpi, const RECT& suggested) {
    fonts_ = fontsOn(workAreaOf(MonitorFromRect(&suggested, MONITOR_DEFAULTTONEAREST)), dpi);
    RECT rect = suggested;
    if (!layout_.resizable) {
        const SIZE size = windowSize(firstClientSize(layout_, form_, fonts_.scale()), dpi);
        rect.right = rect.left + size.cx;
        rect.bottom = rect.top + size.cy;
    }
    moveTo(rect);
    showIcons();
    useFonts();
}

/// The window grows and shrinks with its texts. A maximised window keeps its size; a minimised one gets its limits when
/// it is shown again.
void FormPeer::settingsChanged() {
    const RECT area = workAreaOf(MonitorFromWindow(window(), MONITOR_DEFAULTTONEAREST));
    Fonts changed = fontsOn(area, fonts_.dpi());
    if (changed == fonts_) return;
    const auto former = static_cast<int>(fonts_.scale());
    fonts_ = std::move(changed);
    if (IsZoomed(window()) == FALSE && IsIconic(window()) == FALSE) {
        RECT client{};
        GetClientRect(window(), &client);
        const auto grown = [&](LONG length) { return MulDiv(length, static_cast<int>(fonts_.scale()), former); };
        SIZE size{grown(client.right), grown(client.bottom)};
        if (!layout_.resizable) size = firstClientSize(layout_, form_, fonts_.scale());
        size = windowSize(size, fonts_.dpi());
        RECT rect{};
        GetWindowRect(window(), &rect);
        moveTo(within(area, {rect.left, rect.top, rect.left + size.cx, rect.top + size.cy}));
    }
    useFonts();
}

void FormPeer::limitSize(MINMAXINFO& limits) const {
    const SIZE smallest = windowSize(smallestClientSize(layout_, form_, fonts_.scale()), fonts_.dpi());
    limits.ptMinTrackSize = {smallest.cx, smallest.cy};
}

void FormPeer::systemChanged(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_SETTINGCHANGE) settingsChanged();
    for (const auto& control : controls_) {
        if (message != WM_THEMECHANGED) SendMessageW(control->window(), message, wParam, lParam);
        control->systemChanged();
    }
}

LRESULT FormPeer::message(UINT message, WPARAM wParam, LPARAM lParam) {
    const auto fromControl = [&] {
        return isEnding() || closed_ ? nullptr : controlOf(reinterpret_cast<HWND>(lParam));
    };
    switch (message) {
        case WM_COMMAND:
            if (NativeControl* control = fromControl()) control->command(HIWORD(wParam));
            return 0;
        case WM_NOTIFY:
            if (NativeControl* control = controlOf(reinterpret_cast<NMHDR*>(lParam)->hwndFrom)) {
                return control->notify(*reinterpret_cast<NMHDR*>(lParam));
            }
            break;
        case WM_DRAWITEM: {
            const auto& draw = *reinterpret_cast<const DRAWITEMSTRUCT*>(lParam);
            if (NativeControl* control = controlOf(draw.hwndItem)) control->paint(draw);
            return TRUE;
        }
        case WM_CTLCOLOREDIT:
        case WM_CTLCOLORSTATIC:
            if (const NativeControl* control = controlOf(reinterpret_cast<HWND>(lParam))) {
                const HBRUSH brush = const_cast<NativeControl*>(control)->background(reinterpret_cast<HDC>(wParam));
                if (brush != nullptr) return reinterpret_cast<LRESULT>(brush);
            }
            break;
        case WM_CLOSE:
            closedByUser();
            return 0;
        case WM_ENDSESSION:
            // The system may end the process as soon as this returns, so the file must be closed now.
            if (wParam != FALSE) closedByUser();
            return 0;
        case WM_SETFOCUS:
            focusActiveControl();
            return 0;
        case WM_SIZE:
            if (wParam != SIZE_MINIMIZED) placeControls();
            return 0;
        case WM_GETMINMAXINFO:
            if (layout_.resizable) limitSize(*reinterpret_cast<MINMAXINFO*>(lParam));
            return 0;
        case WM_DPICHANGED:
            dpiChanged(HIWORD(wParam), *reinterpret_cast<const RECT*>(lParam));
            return 0;
        case WM_SETTINGCHANGE:
        case WM_SYSCOLORCHANGE:
        case WM_THEMECHANGED:
            systemChanged(message, wParam, lParam);
            break;
        default:
            break;
    }
    return DefWindowProcW(window(), message, wParam, lParam);
}

LRESULT CALLBACK FormPeer::procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    auto* peer = reinterpret_cast<FormPeer*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    // Null while the window is being made; and while it is being destroyed, the peer no longer has this handle.
    if (peer == nullptr || peer->window() != window) return DefWindowProcW(window, message, wParam, lParam);
    return atBoundary([&] { return peer->message(message, wParam, lParam); });
}

}  // namespace win32
