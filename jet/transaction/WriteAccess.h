#pragma once

#include <memory>

#include "jet/Errors.h"
#include "jet/storage/Storage.h"

namespace jet {

/// The right to write a file, as long as this object lives: the file is open so that others cannot write (Windows), our
/// lock is held, and nobody uses the file through the original engine. The last point is checked after the wait for the
/// lock. The work of an interrupted writer is rolled back before anybody sees the file.
class WriteAccess {
public:
    /// Waits at most kLockWait in all.
    /// @throws WriteRefused: in use, read-only. RuntimeError if there is a journal that must not be applied
    explicit WriteAccess(Storage& storage);

    /// Only rolls back the work of an interrupted writer.
    /// @throws RuntimeError (journal left) if we may not write, or if the journal must not be applied
    static void rollBack(Storage& storage);

    PageIo& io() { return *io_; }

private:
    std::unique_ptr<PageIo> io_;
};

}  // namespace jet
