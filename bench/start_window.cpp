/// The least that a program with a window can do. The tool's start is measured against it.
#include <windows.h>

namespace {

LRESULT CALLBACK windowProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_DESTROY) PostQuitMessage(0);
    return DefWindowProcW(window, message, wParam, lParam);
}

}  // namespace

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, LPWSTR, int show) {
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = windowProcedure;
    windowClass.hInstance = instance;
    windowClass.lpszClassName = L"EmptyWindow";
    RegisterClassW(&windowClass);
    HWND window = CreateWindowW(L"EmptyWindow", L"Anmeldung", WS_OVERLAPPEDWINDOW, 100, 100, 340, 120, nullptr, nullptr,
                                instance, nullptr);
    ShowWindow(window, show);
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0)
        DispatchMessageW(&message);
    return 0;
}
