#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <windows.h>

#include "base/RuntimeError.h"
#include "jet/storage/PageIo.h"

/// What the two sides of the door to the machine share.
namespace jet {

/// The place in a file, for the calls that read, write and lock.
OVERLAPPED at(std::uint64_t offset);

/// Takes over an open handle.
/// @throws RuntimeError if it is no ordinary file
std::unique_ptr<PageIo> fileIo(HANDLE handle, const base::Text& path);

/// Whether there is no more room: on the disk, of the user's share of it, or in a file of the largest size.
bool isDiskFull(DWORD systemError);

/// Why a file could not be opened, in the original engine's words.
base::RuntimeError openingFailed(const base::Text& path, DWORD systemError);

/// Tries the step again for half a second while it fails as with a virus scanner in the way: one that looks at a file
/// keeps it from being renamed or deleted, and a deleted file keeps its name so long and denies everything.
/// @return whether it succeeded in the end; if not, the system still has its error
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

/// Long paths need the whole path in the system's plainest form; short ones stay as they are.
std::wstring nativePath(const base::Text& path);

}  // namespace jet
