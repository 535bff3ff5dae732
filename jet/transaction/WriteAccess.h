#pragma once

#include <memory>
#include <optional>

#include "jet/Errors.h"
#include "jet/storage/Storage.h"

namespace jet {

/// The right to write a file, held while it lives: the file opened so that others cannot write (Windows), our lock, and
/// nobody in the file through the original engine. In this order, so that the last look is not older than the wait.
/// Whatever an interrupted writer left is rolled back before anybody gets to see the file.
class WriteAccess {
public:
    /// Waits at most kLockWait for all of it.
    /// @throws RuntimeError with the numbers of `kind`: in use, read-only; the journal that lies there must not be
    ///         applied
    WriteAccess(Storage& storage, WriteKind kind);

    /// Only to roll back what an interrupted writer left.
    /// @throws RuntimeError (journal left) if we may not write, or the journal must not be applied
    static void rollBack(Storage& storage);

    PageIo& io() { return *io_; }

private:
    explicit WriteAccess(Storage& storage);

    std::unique_ptr<PageIo> io_;
    Refusal refusal_ = Refusal::None;
    std::optional<FileUser> holder_;  ///< of the original engine, if refused
};

}  // namespace jet
