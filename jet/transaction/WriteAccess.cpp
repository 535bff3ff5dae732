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
    refusal_ = opened.refusal;
    if (refusal_ == Refusal::ReadOnly) return;
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
    if (opened.io && !opened.io->lock(LockKind::Exclusive, std::max(left, std::chrono::milliseconds{0})))
        refusal_ = Refusal::InUse;
    // Looks after the wait: where opening the file does not keep a user out, he may have come during the wait.
    holder_ = storage.originalUser();
    if (holder_) refusal_ = Refusal::InUse;
    if (refusal_ != Refusal::None) return;
    io_ = std::move(opened.io);
    Journal(storage).recover(*io_, Journal::Cause::Left);
}

WriteAccess::WriteAccess(Storage& storage, WriteKind kind) : WriteAccess(storage) {
    if (refusal_ == Refusal::ReadOnly) throw readOnly(kind);
    if (refusal_ == Refusal::InUse) {
        const FileUser holder = holder_.value_or(FileUser{});
        throw lockedByUser(kind, storage.path(), holder.user, holder.computer);
    }
}

void WriteAccess::rollBack(Storage& storage) {
    const WriteAccess access(storage);
    if (access.refusal_ != Refusal::None) throw journalLeft(storage.path(), storage.journalPath());
}

}  // namespace jet
