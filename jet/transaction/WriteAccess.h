#pragma once

#include <memory>
#include <optional>

#include "jet/Errors.h"
#include "jet/storage/Storage.h"

namespace jet {

/// The right to write a file, as long as this object lives: the file is open so that others cannot write (Windows), our
/// lock is held, and nobody uses the file through the original engine. The last point is checked after the wait for the
/// lock. The work of an interrupted writer is rolled back before anybody sees the file.
class WriteAccess {
public:
    /// Waits at most kLockWait in all.
    /// @throws RuntimeError with the numbers of `kind`: in use, read-only. Also if there is a journal that must not be
    /// applied.
    WriteAccess(Storage& storage, WriteKind kind);

    /// Only rolls back the work of an interrupted writer.
    /// @throws RuntimeError (journal left) if we may not write, or if the journal must not be applied
    static void rollBack(Storage& storage);

    PageIo& io() { return *io_; }

private:
    explicit WriteAccess(Storage& storage);

    std::unique_ptr<PageIo> io_;
    Refusal refusal_ = Refusal::None;
    std::optional<FileUser> holder_;  ///< a user of the original engine, if that is why the access is refused
};

}  // namespace jet
