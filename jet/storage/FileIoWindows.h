#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <windows.h>

#include "base/RuntimeError.h"
#include "jet/storage/PageIo.h"

/// Shared by the two Windows parts of this room.
namespace jet {

/// The position in a file, for the calls that read, write and lock.
OVERLAPPED at(std::uint64_t offset);

/// Takes ownership of an open handle.
/// @throws RuntimeError if it is not an ordinary file
std::unique_ptr<PageIo> fileIo(HANDLE handle, const base::Text& path);

/// Whether there is no space left: on the disk, in the user's quota, or because the file has the largest possible size.
bool isDiskFull(DWORD systemError);

/// The reason why a file could not be opened, in the original engine's words.
base::RuntimeError openingFailed(const base::Text& path, DWORD systemError);

/// Repeats the step for up to half a second while a virus scanner may be the cause of its failure. A file that is being
/// scanned cannot be renamed or deleted. If it was deleted, its name stays taken until the scan ends, and every access
/// is denied.
/// @return whether the step succeeded; if not, GetLastError() still has the error
template <typename Step>
bool insist(Step&& step) {
    constexpr int kTries = 50;
    constexpr DWORD kPauseMs = 10;
    for (int attempt = 1; !step(); ++attempt) {
        const DWORD systemError = GetLastError();
        const bool mayPass = systemError == ERROR_ACCESS_DENIED || systemError == ERROR_SHARING_VIOLATION;
        if (!mayPass || attempt == kTries) return false;
        Sleep(kPauseMs);
    }
    return true;
}

/// A long path must be absolute and in the system's plainest form. Short paths stay as they are.
std::wstring nativePath(const base::Text& path);

}  // namespace jet
