#include "jet/storage/FileIoWindows.h"
#include "jet/storage/NewFile.h"

namespace jet::machine {
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
    const auto isRenamed = [from = nativePath(path), to = nativePath(newPath)] {
        return MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_WRITE_THROUGH) != 0;
    };
    if (!insist(isRenamed)) throw openingFailed(newPath, GetLastError());
}

void syncFolder(const base::Text& /*path*/) {
    // The renaming has already been flushed.
}

void removeFile(const base::Text& path) noexcept {
    insist([native = nativePath(path)] { return DeleteFileW(native.c_str()) != 0; });
}

}  // namespace jet::machine
