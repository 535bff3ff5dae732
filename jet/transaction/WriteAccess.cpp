#include "jet/transaction/WriteAccess.h"

#include <algorithm>

#include "jet/storage/LockWait.h"
#include "jet/transaction/Journal.h"

namespace jet {

WriteAccess::WriteAccess(Storage& storage) {
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + kLockWait;
    lockUntil(deadline, [&] {
        io_ = storage.openForWriting();
        return io_ != nullptr;
    });
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
    const bool isLocked = io_ && io_->lock(LockKind::Exclusive, std::max(left, std::chrono::milliseconds{0}));
    // Looks after the wait: where opening the file does not keep a user out, he may have come during the wait.
    const auto holder = storage.originalUser();
    if (!isLocked || holder) {
        const FileUser user = holder.value_or(FileUser{});
        throw lockedByUser(storage.path(), user.user, user.computer);
    }
    Journal(storage).recover(*io_, Journal::Cause::Left);
}

void WriteAccess::rollBack(Storage& storage) {
    try {
        const WriteAccess access(storage);
    } catch (const WriteRefused&) {
        throw journalLeft(storage.path(), storage.journalPath());
    }
}

}  // namespace jet
