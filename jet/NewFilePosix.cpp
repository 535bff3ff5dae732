#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "jet/FileIoPosix.h"
#include "jet/NewFile.h"

namespace jet::machine {
namespace {

constexpr mode_t kForEverybody = 0666;

/// Claims the name by an empty file, and renames over that one: for file systems that can do no better.
bool renameOverClaim(const char* path, const char* newPath) {
    const int claim = ::open(newPath, O_CLOEXEC | O_CREAT | O_EXCL | O_WRONLY, kForEverybody);
    if (claim < 0) return false;
    ::close(claim);
    if (::rename(path, newPath) == 0) return true;
    const int error = errno;
    ::unlink(newPath);
    errno = error;
    return false;
}

/// Not every file system knows how to rename without replacing, and not every one second names.
bool renameOnly(const char* path, const char* newPath) {
    if (::renameat2(AT_FDCWD, path, AT_FDCWD, newPath, RENAME_NOREPLACE) == 0) return true;
    if (errno != EINVAL && errno != ENOSYS) return false;
    if (::link(path, newPath) == 0) {
        ::unlink(path);
        return true;
    }
    return errno != EEXIST && renameOverClaim(path, newPath);
}

}  // namespace

bool fileIsThere(const base::Text& path) {
    struct stat status {};
    return ::lstat(base::toUtf8(path).c_str(), &status) == 0;
}

std::unique_ptr<PageIo> createFile(const base::Text& path, const base::Text& shownPath) {
    const int flags = O_CLOEXEC | O_CREAT | O_EXCL | O_RDWR;
    const int descriptor = ::open(base::toUtf8(path).c_str(), flags, kForEverybody);
    if (descriptor >= 0) return fileIo(descriptor, shownPath);
    if (errno == EEXIST) return nullptr;
    throw openingFailed(shownPath, errno);
}

void renameFile(const base::Text& path, const base::Text& newPath) {
    if (!renameOnly(base::toUtf8(path).c_str(), base::toUtf8(newPath).c_str())) throw openingFailed(newPath, errno);
}

void removeFile(const base::Text& path) noexcept {
    ::unlink(base::toUtf8(path).c_str());
}

}  // namespace jet::machine
