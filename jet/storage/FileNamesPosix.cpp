#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "jet/storage/FileIoPosix.h"

namespace jet {
namespace {

constexpr mode_t kForEverybody = 0666;

/// Reserves the name with an empty file and renames over that file. For file systems that have no better way.
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

}  // namespace

/// Some file systems cannot rename without replacing, and some have no hard links.
bool renameWithoutReplacing(const std::string& path, const std::string& newPath) {
    if (::renameat2(AT_FDCWD, path.c_str(), AT_FDCWD, newPath.c_str(), RENAME_NOREPLACE) == 0) return true;
    if (errno != EINVAL && errno != ENOSYS) return false;
    if (::link(path.c_str(), newPath.c_str()) == 0) {
        ::unlink(path.c_str());
        return true;
    }
    return errno != EEXIST && renameOverClaim(path.c_str(), newPath.c_str());
}

std::string folderOf(const std::string& path) {
    return path.substr(0, path.rfind('/') + 1);
}

bool syncFolderOf(const std::string& path) {
    const std::string folder = folderOf(path);
    const int descriptor = ::open(folder.empty() ? "." : folder.c_str(), O_CLOEXEC | O_RDONLY | O_DIRECTORY);
    if (descriptor < 0) return false;
    const bool isFlushed = ::fsync(descriptor) == 0;
    const int error = errno;
    ::close(descriptor);
    errno = error;
    return isFlushed;
}

}  // namespace jet
