#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <span>

#include "base/Text.h"

namespace jet {

enum class LockKind { None, Shared, Exclusive };

/// The door to the machine: the bytes of one file, and the lock by which several programs of this engine take
/// turns. It knows nothing of pages.
///
/// All methods throw a RuntimeError when the machine fails.
class PageIo {
public:
    virtual ~PageIo() = default;
    PageIo(const PageIo&) = delete;
    PageIo& operator=(const PageIo&) = delete;

    virtual std::uint64_t sizeBytes() = 0;

    /// Fills `bytes` whole; a file that ends before is a failure.
    virtual void read(std::uint64_t offset, std::span<std::uint8_t> bytes) = 0;
    virtual void write(std::uint64_t offset, std::span<const std::uint8_t> bytes) = 0;

    /// Returns when everything written is on the disk.
    virtual void sync() = 0;
    virtual void resize(std::uint64_t sizeBytes) = 0;

    /// Takes, changes or gives back the one lock of this file; it lies far behind the data and hinders no other
    /// program's reading. Shared needs no right to write; giving back never fails.
    /// @param wait  how long to try
    /// @return false if somebody else kept it locked for so long; then nothing is locked
    virtual bool lock(LockKind kind, std::chrono::milliseconds wait) = 0;

protected:
    PageIo() = default;
};

/// How long an operation waits for another program of this engine.
inline constexpr std::chrono::milliseconds kLockWait{2000};

/// Where the lock lies; no file of this format reaches so far.
inline constexpr std::uint64_t kLockOffset = 0x4000'0000'0000;

/// The turn: whoever waits for the lock holds this byte, shared or exclusively like it. So readers who come one after
/// the other cannot keep a waiting writer out, nor writers a waiting reader.
inline constexpr std::uint64_t kTurnOffset = kLockOffset + 1;

enum class OpenMode {
    Read,
    ReadWrite,
    CreateNew,  ///< for reading and writing; fails if the file exists
};

/// Opens a file that others may have open for reading and writing too.
/// @throws RuntimeError with the original engine's words: file or folder missing, in use, no permission
std::unique_ptr<PageIo> openFile(const base::Text& path, OpenMode mode);

}  // namespace jet
