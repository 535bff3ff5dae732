#include "jet/storage/FileIoWindows.h"

#include "jet/Errors.h"
#include "jet/storage/LockWait.h"

namespace jet {
namespace {

/// A path with this prefix may be longer than the old limit of 260 units.
constexpr wchar_t kLongPath[] = L"\\\\?\\";
constexpr std::size_t kOldPathUnits = 248;

/// ERROR_DISK_RESOURCES_EXHAUSTED and ERROR_DISK_QUOTA_EXCEEDED, which some sets of headers lack.
constexpr DWORD kDiskResourcesExhausted = 314;
constexpr DWORD kDiskQuotaExceeded = 1295;

class FileIo : public PageIo {
public:
    FileIo(HANDLE handle, base::Text path) : handle_(handle), path_(std::move(path)) {}
    ~FileIo() override { CloseHandle(handle_); }
    FileIo(const FileIo&) = delete;
    FileIo& operator=(const FileIo&) = delete;

    std::uint64_t sizeBytes() override {
        LARGE_INTEGER size{};
        if (!GetFileSizeEx(handle_, &size)) fail();
        return static_cast<std::uint64_t>(size.QuadPart);
    }

    void read(std::uint64_t offset, std::span<std::uint8_t> bytes) override {
        while (!bytes.empty()) {
            OVERLAPPED place = at(offset);
            DWORD count = 0;
            if (!ReadFile(handle_, bytes.data(), static_cast<DWORD>(bytes.size()), &count, &place)) fail();
            if (count == 0) throw deviceFailed(path_, ERROR_HANDLE_EOF);
            bytes = bytes.subspan(count);
            offset += count;
        }
    }

    void write(std::uint64_t offset, std::span<const std::uint8_t> bytes) override {
        while (!bytes.empty()) {
            OVERLAPPED place = at(offset);
            DWORD count = 0;
            if (!WriteFile(handle_, bytes.data(), static_cast<DWORD>(bytes.size()), &count, &place)) fail();
            if (count == 0) throw deviceFailed(path_, ERROR_WRITE_FAULT);
            bytes = bytes.subspan(count);
            offset += count;
        }
    }

    void sync() override {
        if (!FlushFileBuffers(handle_)) fail();
    }

    void resize(std::uint64_t sizeBytes) override {
        LARGE_INTEGER size{};
        size.QuadPart = static_cast<LONGLONG>(sizeBytes);
        if (!SetFilePointerEx(handle_, size, nullptr, FILE_BEGIN) || !SetEndOfFile(handle_)) fail();
    }

    bool lock(LockKind kind, std::chrono::milliseconds wait) override {
        // Windows does not change a lock of a handle but adds another one. So the old lock must be released first.
        if (isLocked_) unlock(kLockOffset);
        isLocked_ = false;
        if (kind == LockKind::None) return true;
        const auto deadline = std::chrono::steady_clock::now() + wait;
        if (!waitForLock(kTurnOffset, kind, deadline)) return false;
        isLocked_ = waitForLock(kLockOffset, kind, deadline);
        unlock(kTurnOffset);
        return isLocked_;
    }

private:
    /// A lock that cannot be released ends when the handle is closed.
    void unlock(std::uint64_t offset) {
        OVERLAPPED place = at(offset);
        UnlockFileEx(handle_, 0, 1, 0, &place);
    }

    bool waitForLock(std::uint64_t offset, LockKind kind, std::chrono::steady_clock::time_point deadline) {
        return lockUntil(deadline, [&] { return tryLock(offset, kind); });
    }

    bool tryLock(std::uint64_t offset, LockKind kind) {
        const DWORD exclusive = kind == LockKind::Exclusive ? LOCKFILE_EXCLUSIVE_LOCK : 0;
        OVERLAPPED place = at(offset);
        if (LockFileEx(handle_, LOCKFILE_FAIL_IMMEDIATELY | exclusive, 0, 1, 0, &place)) return true;
        const DWORD systemError = GetLastError();
        if (systemError == ERROR_LOCK_VIOLATION || systemError == ERROR_IO_PENDING) return false;
        throw deviceFailed(path_, systemError);
    }

    [[noreturn]] void fail() const {
        const DWORD systemError = GetLastError();
        if (systemError == ERROR_LOCK_VIOLATION || systemError == ERROR_SHARING_VIOLATION) throw fileInUse(path_);
        if (isDiskFull(systemError)) throw diskFull();
        throw deviceFailed(path_, systemError);
    }

    HANDLE handle_;
    base::Text path_;
    bool isLocked_ = false;
};

}  // namespace

OVERLAPPED at(std::uint64_t offset) {
    OVERLAPPED place{};
    place.Offset = static_cast<DWORD>(offset);
    place.OffsetHigh = static_cast<DWORD>(offset >> 32U);
    return place;
}

std::unique_ptr<PageIo> fileIo(HANDLE handle, const base::Text& path) {
    auto io = std::make_unique<FileIo>(handle, path);
    if (GetFileType(handle) != FILE_TYPE_DISK) throw accessDenied(path);
    return io;
}

bool isDiskFull(DWORD systemError) {
    switch (systemError) {
        case ERROR_DISK_FULL:
        case ERROR_HANDLE_DISK_FULL:
        case kDiskQuotaExceeded:
        case ERROR_NOT_ENOUGH_QUOTA:  // some servers report this
        case kDiskResourcesExhausted:
        case ERROR_FILE_TOO_LARGE:
            return true;
        default:
            return false;
    }
}

base::RuntimeError openingFailed(const base::Text& path, DWORD systemError) {
    switch (systemError) {
        case ERROR_FILE_NOT_FOUND:
            return fileNotFound(path);
        case ERROR_PATH_NOT_FOUND:
        case ERROR_BAD_NETPATH:
        case ERROR_BAD_NET_NAME:
        case ERROR_INVALID_NAME:
        case ERROR_INVALID_DRIVE:
        case ERROR_DIRECTORY:
        case ERROR_NOT_READY:
            return folderNotFound(path);
        case ERROR_SHARING_VIOLATION:
        case ERROR_LOCK_VIOLATION:
            return fileInUse(path);
        case ERROR_FILE_EXISTS:
        case ERROR_ALREADY_EXISTS:
            return fileExists(path);
        case ERROR_ACCESS_DENIED:
        case ERROR_WRITE_PROTECT:
            return accessDenied(path);
        default:
            return isDiskFull(systemError) ? diskFull() : deviceFailed(path, systemError);
    }
}

std::wstring nativePath(const base::Text& path) {
    std::wstring native(path.begin(), path.end());
    if (native.size() < kOldPathUnits || native.starts_with(kLongPath)) return native;
    const DWORD needed = GetFullPathNameW(native.c_str(), 0, nullptr, nullptr);
    std::wstring whole(needed, L'\0');
    const DWORD written = GetFullPathNameW(native.c_str(), needed, whole.data(), nullptr);
    if (needed == 0 || written == 0 || written >= needed) return native;
    whole.resize(written);
    if (whole.starts_with(L"\\\\")) return std::wstring(kLongPath) + L"UNC" + whole.substr(1);
    return kLongPath + whole;
}

std::unique_ptr<PageIo> openFile(const base::Text& path, OpenMode mode) {
    const DWORD access = mode == OpenMode::Read ? GENERIC_READ : GENERIC_READ | GENERIC_WRITE;
    const DWORD disposition = mode == OpenMode::CreateNew ? CREATE_NEW : OPEN_EXISTING;
    const HANDLE handle = CreateFileW(nativePath(path).c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                      disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) throw openingFailed(path, GetLastError());
    return fileIo(handle, path);
}

}  // namespace jet
