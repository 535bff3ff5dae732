#include "jet/transaction/WriteAccess.h"

#include <algorithm>

#include "jet/storage/LockWait.h"
#include "jet/transaction/Journal.h"

namespace jet {
namespace {

using Clock = std::chrono::steady_clock;

OpenedFile openWithin(Storage& storage, Clock::time_point deadline) {
    OpenedFile opened;
    lockUntil(deadline, [&] {
        opened = storage.openForWriting();
        return opened.refusal != Refusal::InUse;
    });
    return opened;
}

}  // namespace

WriteAccess::WriteAccess(Storage& storage) {
    const auto deadline = Clock::now() + kLockWait;
    OpenedFile opened = openWithin(storage, deadline);
    if (opened.refusal == Refusal::ReadOnly) throw readOnly();
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
    const bool isLocked =
        opened.io && opened.io->lock(LockKind::Exclusive, std::max(left, std::chrono::milliseconds{0}));
    // Looks after the wait: where opening the file does not keep a user out, he may have come during the wait.
    const auto holder = storage.originalUser();
    if (!isLocked || holder) {
        const FileUser user = holder.value_or(FileUser{});
        throw lockedByUser(storage.path(), user.user, user.computer);
    }
    io_ = std::move(opened.io);
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
