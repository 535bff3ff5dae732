#include <array>
#include <string_view>
#include <utility>

#include "jet/Errors.h"
#include "jet/storage/FileIoWindows.h"
#include "jet/storage/LockFile.h"
#include "jet/storage/Storage.h"

namespace jet {
namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
constexpr std::wstring_view kPlainPath = L"\\\\?\\";
constexpr std::wstring_view kPlainNetworkPath = L"\\\\?\\UNC\\";

/// Closes its handle when it goes out of scope.
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

HANDLE open(const base::Text& path, DWORD access, DWORD share, DWORD disposition, DWORD flags = 0) {
    return CreateFileW(nativePath(path).c_str(), access, share, nullptr, disposition, FILE_ATTRIBUTE_NORMAL | flags,
                       nullptr);
}

/// @return false, with the system's error, if the file still exists
bool deleteFile(const base::Text& path) {
    const auto deleted = [native = nativePath(path)] {
        return DeleteFileW(native.c_str()) != 0 || GetLastError() == ERROR_FILE_NOT_FOUND;
    };
    return insist(deleted);
}

/// A folder, or a link or placeholder for a file elsewhere.
bool isNoOrdinaryFile(DWORD attributes) {
    return (attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT)) != 0;
}

bool isOrdinaryFile(const Handle& handle) {
    BY_HANDLE_FILE_INFORMATION information{};
    return GetFileInformationByHandle(handle.get(), &information) && !isNoOrdinaryFile(information.dwFileAttributes);
}

/// The one real path of the file, the same for every short name, drive or link that leads to it.
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

bool isInUse(DWORD systemError) {
    return systemError == ERROR_SHARING_VIOLATION || systemError == ERROR_LOCK_VIOLATION;
}

class FileStorage : public Storage {
public:
    explicit FileStorage(const base::Text& path)
        : path_(path),
          file_(wholePath(path)),
          journal_(file_ + base::Text(kJournalSuffix)),
          newJournal_(file_ + base::Text(kNewJournalSuffix)) {}

    const base::Text& path() const override { return path_; }
    base::Text fileName() const override { return file_.substr(file_.find_last_of(u"\\/:") + 1); }
    base::Text journalPath() const override { return journal_; }

    std::unique_ptr<PageIo> openForReading() override { return openFile(path_, OpenMode::Read); }

    std::unique_ptr<PageIo> openForWriting() override {
        const HANDLE handle = open(file_, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, OPEN_EXISTING);
        if (handle == INVALID_HANDLE_VALUE && isInUse(GetLastError())) return nullptr;
        return opened(handle, path_);
    }

    bool hasJournal() override {
        const auto isFound = [native = nativePath(journal_)] {
            return GetFileAttributesW(native.c_str()) != INVALID_FILE_ATTRIBUTES;
        };
        if (insist(isFound)) return true;
        if (GetLastError() == ERROR_FILE_NOT_FOUND) return false;
        throw openingFailed(journal_, GetLastError());
    }

    std::unique_ptr<PageIo> openJournal() override {
        Handle handle(open(journal_, GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT));
        if (!handle.isOpen()) throw openingFailed(journal_, GetLastError());
        if (!isOrdinaryFile(handle)) throw accessDenied(journal_);
        return fileIo(handle.release(), journal_);
    }

    /// The journal inherits the rights of the folder.
    std::unique_ptr<PageIo> createJournal() override {
        HANDLE handle = INVALID_HANDLE_VALUE;
        insist([&] {
            handle = open(newJournal_, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, CREATE_NEW,
                          FILE_FLAG_OPEN_REPARSE_POINT);
            return handle != INVALID_HANDLE_VALUE;
        });
        if (handle == INVALID_HANDLE_VALUE && GetLastError() == ERROR_FILE_EXISTS) throw accessDenied(newJournal_);
        return opened(handle, newJournal_);
    }

    void finishJournal() override {
        const auto isRenamed = [from = nativePath(newJournal_), to = nativePath(journal_)] {
            return MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_WRITE_THROUGH) != 0;
        };
        if (!insist(isRenamed)) failToWrite(journal_);
    }

    bool removeJournal() override { return deleteFile(journal_); }

    void removeNewJournal() override {
        const DWORD attributes = GetFileAttributesW(nativePath(newJournal_).c_str());
        if (attributes != INVALID_FILE_ATTRIBUTES && !isNoOrdinaryFile(attributes)) deleteFile(newJournal_);
    }

    std::optional<FileUser> originalUser() override {
        const Handle handle(open(lockFilePath(file_), GENERIC_READ, kShareAll, OPEN_EXISTING));
        if (!handle.isOpen()) {
            return GetLastError() == ERROR_FILE_NOT_FOUND ? std::nullopt : std::optional(FileUser{});
        }
        // One lock over all bytes is enough: a user who comes now cannot open the file itself, because it is denied
        // already.
        if (isFree(handle, 0, kUserLocks)) return std::nullopt;
        for (std::uint64_t slot = 0; slot < kUserLocks; ++slot) {
            if (!isFree(handle, slot, 1)) return userOf(handle, slot);
        }
        return std::nullopt;
    }

private:
    /// @param handle  as opened; if that failed, GetLastError() must still have the error
    static std::unique_ptr<PageIo> opened(HANDLE handle, const base::Text& path) {
        if (handle == INVALID_HANDLE_VALUE) failToWrite(path);
        return fileIo(handle, path);
    }

    /// Throws the error of the last system call.
    [[noreturn]] static void failToWrite(const base::Text& path) {
        const DWORD systemError = GetLastError();
        const bool isReadOnly = systemError == ERROR_ACCESS_DENIED || systemError == ERROR_WRITE_PROTECT;
        if (isReadOnly || isInUse(systemError)) throw readOnly();
        throw openingFailed(path, systemError);
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
    base::Text newJournal_;
};

}  // namespace

std::unique_ptr<Storage> fileStorage(const base::Text& path) {
    return std::make_unique<FileStorage>(path);
}

}  // namespace jet
