#include "jet/storage/FileIoPosix.h"

#include <cerrno>
#include <fcntl.h>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "jet/Errors.h"
#include "jet/storage/LockWait.h"

namespace jet {
namespace {

short lockType(LockKind kind) {
    switch (kind) {
        case LockKind::None:
            return F_UNLCK;
        case LockKind::Shared:
            return F_RDLCK;
        case LockKind::Exclusive:
            return F_WRLCK;
    }
    return F_UNLCK;
}

bool isDiskFull(int systemError) {
    // EFBIG: the file would exceed the largest size that the file system or a limit of this process allows.
    return systemError == ENOSPC || systemError == EDQUOT || systemError == EFBIG;
}

/// The limit for files that this process writes.
std::uint64_t largestFileBytes() {
    rlimit limit{};
    if (::getrlimit(RLIMIT_FSIZE, &limit) != 0) return RLIM_INFINITY;
    return limit.rlim_cur;
}

class FileIo : public PageIo {
public:
    FileIo(int descriptor, base::Text path) : descriptor_(descriptor), path_(std::move(path)) {}
    ~FileIo() override { ::close(descriptor_); }
    FileIo(const FileIo&) = delete;
    FileIo& operator=(const FileIo&) = delete;

    std::uint64_t sizeBytes() override {
        struct stat status {};
        if (::fstat(descriptor_, &status) != 0) fail();
        return static_cast<std::uint64_t>(status.st_size);
    }

    void read(std::uint64_t offset, std::span<std::uint8_t> bytes) override {
        while (!bytes.empty()) {
            const ssize_t count = ::pread(descriptor_, bytes.data(), bytes.size(), static_cast<off_t>(offset));
            if (count == 0) throw deviceFailed(path_, EIO);
            if (count < 0 && errno != EINTR) fail();
            if (count > 0) {
                bytes = bytes.subspan(static_cast<std::size_t>(count));
                offset += static_cast<std::uint64_t>(count);
            }
        }
    }

    void write(std::uint64_t offset, std::span<const std::uint8_t> bytes) override {
        // A write up to the limit could end inside a sector, and a journal could not undo that.
        if (offset + bytes.size() > limitBytes_) throw diskFull();
        while (!bytes.empty()) {
            const ssize_t count = ::pwrite(descriptor_, bytes.data(), bytes.size(), static_cast<off_t>(offset));
            if (count == 0) throw deviceFailed(path_, EIO);
            if (count < 0 && errno != EINTR) fail();
            if (count > 0) {
                bytes = bytes.subspan(static_cast<std::size_t>(count));
                offset += static_cast<std::uint64_t>(count);
            }
        }
    }

    void sync() override {
        // Flushes the bytes and the length. The system may write the time of the change later.
        if (::fdatasync(descriptor_) != 0) fail();
    }

    void resize(std::uint64_t sizeBytes) override {
        if (::ftruncate(descriptor_, static_cast<off_t>(sizeBytes)) != 0) fail();
    }

    bool lock(LockKind kind, std::chrono::milliseconds wait) override {
        if (kind == LockKind::None) return tryLock(kLockOffset, kind);
        const auto deadline = std::chrono::steady_clock::now() + wait;
        const bool isLocked = waitForLock(kTurnOffset, kind, deadline) && waitForLock(kLockOffset, kind, deadline);
        tryLock(kTurnOffset, LockKind::None);
        if (!isLocked) tryLock(kLockOffset, LockKind::None);
        return isLocked;
    }

private:
    bool waitForLock(std::uint64_t offset, LockKind kind, std::chrono::steady_clock::time_point deadline) {
        return lockUntil(deadline, [&] { return tryLock(offset, kind); });
    }

    /// The lock belongs to the open file, not to the process. So two connections of one process exclude each other,
    /// too.
    bool tryLock(std::uint64_t offset, LockKind kind) {
        struct flock range {};
        range.l_type = lockType(kind);
        range.l_whence = SEEK_SET;
        range.l_start = static_cast<off_t>(offset);
        range.l_len = 1;
        if (::fcntl(descriptor_, F_OFD_SETLK, &range) == 0) return true;
        // A lock that cannot be released ends when the file is closed.
        if (kind == LockKind::None || errno == EAGAIN || errno == EACCES || errno == EINTR) return false;
        fail();
    }

    [[noreturn]] void fail() const {
        if (isDiskFull(errno)) throw diskFull();
        throw deviceFailed(path_, errno);
    }

    int descriptor_;
    std::uint64_t limitBytes_ = largestFileBytes();
    base::Text path_;
};

bool folderExists(const std::string& path) {
    const auto slash = path.rfind('/');
    if (slash == std::string::npos || slash == 0) return true;
    struct stat status {};
    return ::stat(path.substr(0, slash).c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

}  // namespace

base::RuntimeError openingFailed(const base::Text& path, int systemError) {
    switch (systemError) {
        case ENOENT:
        case ENOTDIR:
        case ENAMETOOLONG:
            return folderExists(base::toUtf8(path)) ? fileNotFound(path) : folderNotFound(path);
        case EACCES:
        case EPERM:
        case EISDIR:
        case EROFS:
            return accessDenied(path);
        case EBUSY:
        case ETXTBSY:
            return fileInUse(path);
        case EEXIST:
            return fileExists(path);
        default:
            return isDiskFull(systemError) ? diskFull() : deviceFailed(path, systemError);
    }
}

std::unique_ptr<PageIo> fileIo(int descriptor, const base::Text& path) {
    auto io = std::make_unique<FileIo>(descriptor, path);
    struct stat status {};
    if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) throw accessDenied(path);
    return io;
}

std::unique_ptr<PageIo> openFile(const base::Text& path, OpenMode mode) {
    const std::string nativePath = base::toUtf8(path);
    // If the name belongs to a pipe or a device, opening it must not block.
    int flags = O_CLOEXEC | O_NONBLOCK | (mode == OpenMode::Read ? O_RDONLY : O_RDWR);
    if (mode == OpenMode::CreateNew) flags |= O_CREAT | O_EXCL;
    const int descriptor = ::open(nativePath.c_str(), flags, 0666);
    if (descriptor < 0) throw openingFailed(path, errno);
    return fileIo(descriptor, path);
}

}  // namespace jet
