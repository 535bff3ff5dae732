#include <array>
#include <string_view>
#include <utility>

#include "jet/Errors.h"
#include "jet/LockFile.h"
#include "jet/Storage.h"
#include "win32/fileio/FileIoWindows.h"

namespace jet {
namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
constexpr std::wstring_view kPlainPath = L"\\\\?\\";
constexpr std::wstring_view kPlainNetworkPath = L"\\\\?\\UNC\\";

/// A file deleted a moment ago keeps its name, and denies everything, while a scanner looks at it.
constexpr int kDeletedTries = 20;
constexpr DWORD kDeletedPauseMs = 10;

/// A handle that is closed whatever happens.
class Handle {
public:
    explicit Handle(HANDLE handle) : handle_(handle) {}
    ~Handle() {
        if (isOpen()) CloseHandle(handle_);
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    bool isOpen() const { return handle_ != INVALID_HANDLE_VALUE; }
    HANDLE get() const { return handle_; }
    HANDLE release() { return std::exchange(handle_, INVALID_HANDLE_VALUE); }

private:
    HANDLE handle_;
};

HANDLE open(const base::Text& path, DWORD access, DWORD share, DWORD disposition) {
    return CreateFileW(nativePath(path).c_str(), access, share, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
}

/// The one name under which everybody finds the file, whatever short name, drive or link leads to it.
base::Text wholePath(const base::Text& path) {
    const Handle handle(open(path, FILE_READ_ATTRIBUTES, kShareAll, OPEN_EXISTING));
    if (!handle.isOpen()) return path;
    const DWORD needed = GetFinalPathNameByHandleW(handle.get(), nullptr, 0, FILE_NAME_NORMALIZED);
    std::wstring whole(needed, L'\0');
    const DWORD written = GetFinalPathNameByHandleW(handle.get(), whole.data(), needed, FILE_NAME_NORMALIZED);
    if (needed == 0 || written == 0 || written >= needed) return path;
    whole.resize(written);
    if (whole.starts_with(kPlainNetworkPath)) {
        whole = L"\\\\" + whole.substr(kPlainNetworkPath.size());
    } else if (whole.starts_with(kPlainPath) && whole.size() > kPlainPath.size() + 1 &&
               whole[kPlainPath.size() + 1] == L':') {
        whole.erase(0, kPlainPath.size());
    }
    return {whole.begin(), whole.end()};
}

class FileStorage : public Storage {
public:
    explicit FileStorage(const base::Text& path)
        : path_(path), file_(wholePath(path)), journal_(file_ + base::Text(kJournalSuffix)) {}

    const base::Text& path() const override { return path_; }
    base::Text fileName() const override { return file_.substr(file_.find_last_of(u"\\/:") + 1); }
    base::Text journalPath() const override { return journal_; }

    std::unique_ptr<PageIo> openForReading() override { return openFile(path_, OpenMode::Read); }

    OpenedFile openForWriting() override {
        return opened(open(file_, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, OPEN_EXISTING), path_);
    }

    std::optional<std::uint64_t> journalSizeBytes() override {
        for (int attempt = 1;; ++attempt) {
            WIN32_FILE_ATTRIBUTE_DATA found{};
            if (GetFileAttributesExW(nativePath(journal_).c_str(), GetFileExInfoStandard, &found))
                return (std::uint64_t{found.nFileSizeHigh} << 32U) | found.nFileSizeLow;
            const DWORD systemError = GetLastError();
            if (systemError == ERROR_FILE_NOT_FOUND) return std::nullopt;
            if (systemError != ERROR_ACCESS_DENIED || attempt == kDeletedTries)
                throw openingFailed(journal_, systemError);
            Sleep(kDeletedPauseMs);
        }
    }

    std::unique_ptr<PageIo> openJournal() override { return openFile(journal_, OpenMode::Read); }

    OpenedFile createJournal() override {
        for (int attempt = 1;; ++attempt) {
            const HANDLE handle = open(journal_, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, CREATE_ALWAYS);
            const bool mayPass = handle == INVALID_HANDLE_VALUE && GetLastError() == ERROR_ACCESS_DENIED;
            if (!mayPass || attempt == kDeletedTries) return opened(handle, journal_);
            Sleep(kDeletedPauseMs);
        }
    }

    bool removeJournal() override {
        if (DeleteFileW(nativePath(journal_).c_str()) || GetLastError() == ERROR_FILE_NOT_FOUND) return true;
        return Handle(open(journal_, GENERIC_WRITE, kShareAll, TRUNCATE_EXISTING)).isOpen();
    }

    void syncFolder() override {}

    std::optional<FileUser> originalUser() override {
        const Handle handle(open(lockFilePath(file_), GENERIC_READ, kShareAll, OPEN_EXISTING));
        if (!handle.isOpen()) {
            return GetLastError() == ERROR_FILE_NOT_FOUND ? std::nullopt : std::optional(FileUser{});
        }
        // All at once: whoever comes in this moment cannot open the file itself, which is denied to him already.
        if (isFree(handle, 0, kUserLocks)) return std::nullopt;
        for (std::uint64_t slot = 0; slot < kUserLocks; ++slot) {
            if (!isFree(handle, slot, 1)) return userOf(handle, slot);
        }
        return std::nullopt;
    }

private:
    /// @param handle  as the opening gave it, with its error still to be asked for
    static OpenedFile opened(HANDLE handle, const base::Text& path) {
        if (handle != INVALID_HANDLE_VALUE) return {fileIo(handle, path), Refusal::None};
        switch (const DWORD systemError = GetLastError()) {
            case ERROR_SHARING_VIOLATION:
            case ERROR_LOCK_VIOLATION:
                return {nullptr, Refusal::InUse};
            case ERROR_ACCESS_DENIED:
            case ERROR_WRITE_PROTECT:
                return {nullptr, Refusal::ReadOnly};
            case ERROR_DISK_FULL:
            case ERROR_HANDLE_DISK_FULL:
                throw diskFull();
            default:
                throw openingFailed(path, systemError);
        }
    }

    static bool isFree(const Handle& handle, std::uint64_t slot, std::uint64_t count) {
        OVERLAPPED place = at(kUserLocksOffset + slot);
        const DWORD bytes = static_cast<DWORD>(count);
        if (!LockFileEx(handle.get(), LOCKFILE_FAIL_IMMEDIATELY | LOCKFILE_EXCLUSIVE_LOCK, 0, bytes, 0, &place))
            return false;
        UnlockFileEx(handle.get(), 0, bytes, 0, &place);
        return true;
    }

    static FileUser userOf(const Handle& handle, std::uint64_t slot) {
        std::array<char, kUserSlotBytes> bytes{};
        OVERLAPPED place = at(slot * kUserSlotBytes);
        DWORD count = 0;
        const bool isRead = ReadFile(handle.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &count, &place) != 0;
        return isRead && count == bytes.size() ? decodeUserSlot({bytes.data(), bytes.size()}) : FileUser{};
    }

    base::Text path_;
    base::Text file_;
    base::Text journal_;
};

}  // namespace

std::unique_ptr<Storage> fileStorage(const base::Text& path) {
    return std::make_unique<FileStorage>(path);
}

}  // namespace jet
