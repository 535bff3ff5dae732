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
#include "jet/storage/FileIoPosix.h"
#include "jet/storage/FileRightsPosix.h"
#include "jet/storage/LockFile.h"
#include "jet/storage/Storage.h"

namespace jet {
namespace {

/// Closes its descriptor when it goes out of scope; -1 for none.
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

/// The one real path of the file, the same for all links to it.
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

/// Whether the name exists, even as a link that leads nowhere.
bool lies(const std::string& path) {
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0;
}

bool isOrdinaryFile(const std::string& path) {
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

class FileStorage : public Storage {
public:
    explicit FileStorage(const base::Text& path)
        : path_(path),
          file_(wholePath(base::toUtf8(path))),
          journal_(file_ + base::toUtf8(kJournalSuffix)),
          newJournal_(file_ + base::toUtf8(kNewJournalSuffix)) {}

    const base::Text& path() const override { return path_; }
    base::Text fileName() const override { return base::fromUtf8(file_.substr(file_.rfind('/') + 1)); }
    base::Text journalPath() const override { return base::fromUtf8(journal_); }

    std::unique_ptr<PageIo> openForReading() override { return openFile(path_, OpenMode::Read); }

    std::unique_ptr<PageIo> openForWriting() override {
        Descriptor descriptor(::open(file_.c_str(), O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW | O_RDWR));
        if (descriptor.isOpen()) return fileIo(descriptor.release(), path_);
        if (isInUse(errno)) return nullptr;
        failToWrite(path_);
    }

    bool hasJournal() override {
        if (lies(journal_)) return true;
        // If the file's name is too long for the journal's suffix, no journal was ever made.
        if (errno == ENOENT || errno == ENAMETOOLONG) return false;
        throw openingFailed(journalPath(), errno);
    }

    std::unique_ptr<PageIo> openJournal() override {
        Descriptor descriptor(::open(journal_.c_str(), O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW | O_RDONLY));
        if (!descriptor.isOpen()) throw openingFailed(journalPath(), errno);
        return fileIo(descriptor.release(), journalPath());
    }

    std::unique_ptr<PageIo> createJournal() override {
        const base::Text name = base::fromUtf8(newJournal_);
        Descriptor descriptor(::open(newJournal_.c_str(), O_CLOEXEC | O_RDWR | O_CREAT | O_EXCL, S_IRUSR | S_IWUSR));
        if (!descriptor.isOpen() && errno == EEXIST) throw accessDenied(name);
        if (!descriptor.isOpen()) failToWrite(name);
        copyRights(file_, descriptor.number());
        return fileIo(descriptor.release(), name);
    }

    void finishJournal() override {
        if (!renameWithoutReplacing(newJournal_, journal_)) failToWrite(journalPath());
        if (syncFolderOf(file_)) return;
        const int systemError = errno;
        removeJournal();
        throw deviceFailed(base::fromUtf8(folderOf(file_)), systemError);
    }

    bool removeJournal() override { return ::unlink(journal_.c_str()) == 0 || errno == ENOENT; }

    void removeNewJournal() override {
        if (isOrdinaryFile(newJournal_)) ::unlink(newJournal_.c_str());
    }

    std::optional<FileUser> originalUser() override {
        const Descriptor descriptor(::open(lockFilePath().c_str(), O_CLOEXEC | O_NONBLOCK | O_RDONLY));
        if (!descriptor.isOpen()) return errno == ENOENT ? std::nullopt : std::optional(FileUser{});
        // This only asks and takes no lock.
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
    /// Throws the error of the last system call.
    [[noreturn]] static void failToWrite(const base::Text& path) {
        if (isReadOnly(errno) || isInUse(errno)) throw readOnly();
        if (errno == ENOSPC || errno == EDQUOT) throw diskFull();
        throw openingFailed(path, errno);
    }

    /// The folder is kept as it is, since its name need not be UTF-8.
    std::string lockFilePath() const { return folderOf(file_) + base::toUtf8(jet::lockFilePath(fileName())); }

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
    std::string newJournal_;
};

}  // namespace

std::unique_ptr<Storage> fileStorage(const base::Text& path) {
    return std::make_unique<FileStorage>(path);
}

}  // namespace jet
