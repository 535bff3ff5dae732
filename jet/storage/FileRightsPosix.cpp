#include "jet/storage/FileRightsPosix.h"

#include <array>
#include <cerrno>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace jet {
namespace {

/// The attribute in which the system keeps a file's list of rights for single users and groups.
constexpr const char* kRightsList = "system.posix_acl_access";

constexpr mode_t kReadAndWrite = 6;

/// Only the administrator can change the owner of a file. Any member of a group can give the file to that group.
bool giveToOwnerAndGroup(int made, const struct stat& wanted) {
    return ::fchown(made, wanted.st_uid, wanted.st_gid) == 0 ||
           ::fchown(made, static_cast<uid_t>(-1), wanted.st_gid) == 0;
}

/// A user may belong to another class (owner, group, others) than in the original. Then he gets only the rights that
/// both classes have.
mode_t modeFor(const struct stat& made, const struct stat& wanted) {
    mode_t owner = wanted.st_mode >> 6U & kReadAndWrite;
    mode_t group = wanted.st_mode >> 3U & kReadAndWrite;
    mode_t others = wanted.st_mode & kReadAndWrite;
    if (made.st_gid != wanted.st_gid) group = others = group & others;
    if (made.st_uid != wanted.st_uid) {
        group &= owner;
        others &= owner;
        owner = kReadAndWrite;
    }
    return owner << 6U | group << 3U | others;
}

}  // namespace

void copyRights(const std::string& path, int made) {
    struct stat wanted {};
    struct stat given {};
    if (::stat(path.c_str(), &wanted) != 0) return;
    const bool hasGroup = giveToOwnerAndGroup(made, wanted);
    std::array<char, 4096> list{};
    const ssize_t listBytes = ::getxattr(path.c_str(), kRightsList, list.data(), list.size());
    if (listBytes >= 0) {
        // If there is a list, the mode no longer says what the group may do.
        if (hasGroup) ::fsetxattr(made, kRightsList, list.data(), static_cast<std::size_t>(listBytes), 0);
        return;
    }
    if (errno == ERANGE) return;
    // The file may have inherited a list for other users from its folder.
    if (::fremovexattr(made, kRightsList) != 0 && errno != ENODATA && errno != ENOTSUP) return;
    if (::fstat(made, &given) == 0) ::fchmod(made, modeFor(given, wanted));
}

}  // namespace jet
