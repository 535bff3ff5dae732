#include "jet/WriteAccess.h"

#include <algorithm>
#include <thread>

#include "jet/Journal.h"

namespace jet {
namespace {

/// Pause between two tries to open.
constexpr std::chrono::milliseconds kOpenPause{10};

using Clock = std::chrono::steady_clock;

OpenedFile openWithin(Storage& storage, Clock::time_point deadline) {
    while (true) {
        OpenedFile opened = storage.openForWriting();
        if (opened.refusal != Refusal::InUse || Clock::now() >= deadline) return opened;
        std::this_thread::sleep_for(kOpenPause);
    }
}

}  // namespace

WriteAccess::WriteAccess(Storage& storage) {
    const auto deadline = Clock::now() + kLockWait;
    OpenedFile opened = openWithin(storage, deadline);
    refusal_ = opened.refusal;
    if (refusal_ == Refusal::ReadOnly) return;
    holder_ = storage.originalUser();
    if (holder_) refusal_ = Refusal::InUse;
    if (refusal_ != Refusal::None) return;
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
    if (!opened.io->lock(LockKind::Exclusive, std::max(left, std::chrono::milliseconds{0}))) {
        refusal_ = Refusal::InUse;
        return;
    }
    io_ = std::move(opened.io);
    Journal(storage).recover(*io_, Journal::WholeWrite::Keep);
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
