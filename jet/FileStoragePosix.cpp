#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <string>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "jet/Errors.h"
#include "jet/FileIoPosix.h"
#include "jet/LockFile.h"
#include "jet/Storage.h"

namespace jet {
namespace {

/// A descriptor that is closed whatever happens; -1 for none.
class Descriptor {
public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() {
        if (number_ >= 0) ::close(number_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    bool isOpen() const { return number_ >= 0; }
    int number() const { return number_; }
    int release() { return std::exchange(number_, -1); }

private:
    int number_;
};

/// The one name under which everybody finds the file, whatever links lead to it.
std::string wholePath(const std::string& path) {
    std::error_code error;
    const std::filesystem::path whole = std::filesystem::canonical(path, error);
    return error ? path : whole.string();
}

bool isReadOnly(int systemError) {
    return systemError == EACCES || systemError == EPERM || systemError == EROFS;
}

bool isInUse(int systemError) {
    return systemError == EBUSY || systemError == ETXTBSY || systemError == EAGAIN;
}

class FileStorage : public Storage {
public:
    explicit FileStorage(const base::Text& path)
        : path_(path), file_(wholePath(base::toUtf8(path))), journal_(file_ + base::toUtf8(kJournalSuffix)) {}

    const base::Text& path() const override { return path_; }
    base::Text fileName() const override { return base::fromUtf8(file_.substr(file_.rfind('/') + 1)); }
    base::Text journalPath() const override { return base::fromUtf8(journal_); }

    std::unique_ptr<PageIo> openForReading() override { return openFile(path_, OpenMode::Read); }
    OpenedFile openForWriting() override { return opened(file_, O_RDWR, path_, 0); }

    std::optional<std::uint64_t> journalSizeBytes() override {
        struct stat status {};
        if (::lstat(journal_.c_str(), &status) == 0) return static_cast<std::uint64_t>(status.st_size);
        // Where the file's own name leaves no room for the ending, no journal was ever made.
        if (errno == ENOENT || errno == ENAMETOOLONG) return std::nullopt;
        throw openingFailed(journalPath(), errno);
    }

    std::unique_ptr<PageIo> openJournal() override {
        Descriptor descriptor(::open(journal_.c_str(), O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW | O_RDONLY));
        if (!descriptor.isOpen()) throw openingFailed(journalPath(), errno);
        return fileIo(descriptor.release(), journalPath());
    }

    /// Whoever may read the file may read the journal, and nobody else: it has the same contents.
    OpenedFile createJournal() override {
        struct stat status {};
        if (::stat(file_.c_str(), &status) != 0) throw openingFailed(path_, errno);
        return opened(journal_, O_RDWR | O_CREAT | O_TRUNC, journalPath(), status.st_mode & 0666U);
    }

    bool removeJournal() override {
        if (::unlink(journal_.c_str()) == 0 || errno == ENOENT) return true;
        return ::truncate(journal_.c_str(), 0) == 0;
    }

    void syncFolder() override {
        const std::string path = folder();
        const Descriptor descriptor(::open(path.empty() ? "." : path.c_str(), O_CLOEXEC | O_RDONLY | O_DIRECTORY));
        if (!descriptor.isOpen() || ::fsync(descriptor.number()) != 0) throw deviceFailed(base::fromUtf8(path), errno);
    }

    std::optional<FileUser> originalUser() override {
        const Descriptor descriptor(::open(lockFilePath().c_str(), O_CLOEXEC | O_NONBLOCK | O_RDONLY));
        if (!descriptor.isOpen()) return errno == ENOENT ? std::nullopt : std::optional(FileUser{});
        // Only asks, takes nothing.
        struct flock range {};
        range.l_type = F_WRLCK;
        range.l_whence = SEEK_SET;
        range.l_start = static_cast<off_t>(kUserLocksOffset);
        range.l_len = static_cast<off_t>(kUserLocks);
        if (::fcntl(descriptor.number(), F_OFD_GETLK, &range) != 0) throw deviceFailed(path_, errno);
        if (range.l_type == F_UNLCK) return std::nullopt;
        const auto first = std::max<off_t>(range.l_start, static_cast<off_t>(kUserLocksOffset));
        return userOf(descriptor, static_cast<std::uint64_t>(first) - kUserLocksOffset);
    }

private:
    static OpenedFile opened(const std::string& nativePath, int flags, const base::Text& path, mode_t mode) {
        Descriptor descriptor(::open(nativePath.c_str(), O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW | flags, mode));
        if (descriptor.isOpen()) return {fileIo(descriptor.release(), path), Refusal::None};
        if (isReadOnly(errno)) return {nullptr, Refusal::ReadOnly};
        if (isInUse(errno)) return {nullptr, Refusal::InUse};
        if (errno == ENOSPC || errno == EDQUOT) throw diskFull();
        throw openingFailed(path, errno);
    }

    /// The folder as it is: its name need not be UTF-8.
    std::string lockFilePath() const { return folder() + base::toUtf8(jet::lockFilePath(fileName())); }

    std::string folder() const { return file_.substr(0, file_.rfind('/') + 1); }

    static FileUser userOf(const Descriptor& descriptor, std::uint64_t slot) {
        std::array<char, kUserSlotBytes> bytes{};
        const auto offset = static_cast<off_t>(slot * kUserSlotBytes);
        if (::pread(descriptor.number(), bytes.data(), bytes.size(), offset) != static_cast<ssize_t>(bytes.size()))
            return {};
        return decodeUserSlot({bytes.data(), bytes.size()});
    }

    base::Text path_;
    std::string file_;
    std::string journal_;
};

}  // namespace

std::unique_ptr<Storage> fileStorage(const base::Text& path) {
    return std::make_unique<FileStorage>(path);
}

}  // namespace jet
