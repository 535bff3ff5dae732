#include "win32/SystemServices.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <shlobj.h>

#include "app/mPublic.h"
#include "win32/ErrorBox.h"
#include "win32/SystemHeaders.h"
#include "win32/WideText.h"

namespace win32 {

std::intptr_t SystemWindowMessages::send(platform::WindowHandle window, std::uint32_t message, std::uintptr_t wParam,
                                         std::intptr_t lParam) {
    return SendMessageA(reinterpret_cast<HWND>(window), message, wParam, lParam);
}

std::size_t SystemSettingsFile::read(base::TextView section, base::TextView key, base::TextView defaultValue,
                                     base::Text& reply, base::TextView filePath) {
    assert(!reply.empty());
    std::string bytes(reply.size(), ' ');
    const DWORD byteCount =
        GetPrivateProfileStringA(toAnsi(section).c_str(), toAnsi(key).c_str(), toAnsi(defaultValue).c_str(),
                                 bytes.data(), static_cast<DWORD>(bytes.size()), toAnsi(filePath).c_str());
    const base::Text value = fromAnsi(std::string_view{bytes}.substr(0, byteCount));
    std::copy(value.begin(), value.end(), reply.begin());
    reply[value.size()] = u'\0';
    return value.size();
}

base::Text SystemProgramFolder::path() const {
    std::wstring file(MAX_PATH, L'\0');
    DWORD length = GetModuleFileNameW(nullptr, file.data(), static_cast<DWORD>(file.size()));
    while (length == file.size()) {  // the buffer was too small
        file.resize(file.size() * 2);
        length = GetModuleFileNameW(nullptr, file.data(), static_cast<DWORD>(file.size()));
    }
    file.resize(length);
    const std::size_t separator = file.find_last_of(L'\\');
    const bool isRoot = separator == 2 && file[1] == L':';
    return fromWide(std::wstring_view{file}.substr(0, isRoot ? separator + 1 : separator));
}

namespace {

class SystemFiles final : public platform::FileSystemObject {
public:
    bool FileExists(base::TextView path) const override {
        const DWORD attributes = GetFileAttributesW(toWide(path).c_str());
        return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
    }
};

}  // namespace

std::unique_ptr<platform::FileSystemObject> SystemFileSystem::createObject() {
    return std::make_unique<SystemFiles>();
}

SystemMessageBoxes::Answer SystemMessageBoxes::show(base::TextView text, Buttons buttons, Icon icon) {
    UINT style = buttons == Buttons::YesNo ? MB_YESNO : MB_OK;
    switch (icon) {
        case Icon::Critical:
            style |= MB_ICONERROR;
            break;
        case Icon::Question:
            style |= MB_ICONQUESTION;
            break;
        case Icon::Information:
            style |= MB_ICONINFORMATION;
            break;
    }
    switch (MessageBoxW(frontWindow(), toWide(text).c_str(), toWide(tolv::kApplicationTitle).c_str(), style)) {
        case IDYES:
            return Answer::Yes;
        case IDNO:
            return Answer::No;
        default:
            return Answer::Ok;
    }
}

void SystemMousePointer::set(Shape shape) {
    // No message is handled between the two calls, so no window can set another cursor meanwhile.
    if (shape == Shape::Hourglass) {
        shownBefore_ = SetCursor(LoadCursorW(nullptr, IDC_WAIT));
    } else {
        SetCursor(static_cast<HCURSOR>(shownBefore_));
    }
}

bool SystemFolderChooser::choose(platform::WindowHandle owner, base::TextView title, base::Text& buffer) {
    const std::string titleBytes = toAnsi(title);
    BROWSEINFOA info{};
    info.hwndOwner = reinterpret_cast<HWND>(owner);
    info.lpszTitle = titleBytes.c_str();
    info.ulFlags = BIF_RETURNONLYFSDIRS;
    PIDLIST_ABSOLUTE const chosen = SHBrowseForFolderA(&info);
    if (chosen == nullptr) return false;

    std::array<char, MAX_PATH> path{};
    if (SHGetPathFromIDListA(chosen, path.data()) != FALSE) {
        buffer = fromAnsi(path.data());
        buffer.push_back(u'\0');
    }
    CoTaskMemFree(chosen);
    return true;
}

}  // namespace win32
