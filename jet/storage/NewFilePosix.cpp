#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "jet/Errors.h"
#include "jet/storage/FileIoPosix.h"
#include "jet/storage/NewFile.h"

namespace jet::machine {
namespace {

constexpr mode_t kForEverybody = 0666;

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
    if (!renameWithoutReplacing(base::toUtf8(path), base::toUtf8(newPath))) throw openingFailed(newPath, errno);
}

void syncFolder(const base::Text& path) {
    if (!syncFolderOf(base::toUtf8(path))) throw deviceFailed(path, errno);
}

void removeFile(const base::Text& path) noexcept {
    ::unlink(base::toUtf8(path).c_str());
}

}  // namespace jet::machine
