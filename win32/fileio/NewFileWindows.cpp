#include <chrono>

#include "jet/LockWait.h"
#include "jet/NewFile.h"
#include "win32/fileio/FileIoWindows.h"

namespace jet::machine {
namespace {

/// How long a scanner may look at a file that was closed a moment ago.
constexpr std::chrono::milliseconds kScannerWait{500};

bool isPassing(DWORD systemError) {
    return systemError == ERROR_SHARING_VIOLATION || systemError == ERROR_ACCESS_DENIED;
}

/// @return the system's last error
template <typename Attempt>
DWORD insist(Attempt&& attempt) {
    DWORD systemError = ERROR_SUCCESS;
    lockUntil(std::chrono::steady_clock::now() + kScannerWait, [&] {
        systemError = attempt() ? ERROR_SUCCESS : GetLastError();
        return !isPassing(systemError);
    });
    return systemError;
}

}  // namespace

bool fileIsThere(const base::Text& path) {
    return GetFileAttributesW(nativePath(path).c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::unique_ptr<PageIo> createFile(const base::Text& path, const base::Text& shownPath) {
    const HANDLE handle = CreateFileW(nativePath(path).c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                      CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle != INVALID_HANDLE_VALUE) return fileIo(handle, shownPath);
    const DWORD systemError = GetLastError();
    if (systemError == ERROR_FILE_EXISTS) return nullptr;
    throw openingFailed(shownPath, systemError);
}

void renameFile(const base::Text& path, const base::Text& newPath) {
    const DWORD systemError = insist([&] {
        return MoveFileExW(nativePath(path).c_str(), nativePath(newPath).c_str(), MOVEFILE_WRITE_THROUGH) != 0;
    });
    if (systemError != ERROR_SUCCESS) throw openingFailed(newPath, systemError);
}

void removeFile(const base::Text& path) noexcept {
    insist([&] { return DeleteFileW(nativePath(path).c_str()) != 0; });
}

}  // namespace jet::machine
