#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <span>

#include "base/Text.h"

namespace jet {

enum class LockKind { None, Shared, Exclusive };

/// The bytes of one file of the machine, and the lock by which several programs of this engine take turns. This
/// interface knows nothing of pages.
///
/// All methods throw a RuntimeError when the machine fails.
class PageIo {
public:
    virtual ~PageIo() = default;
    PageIo(const PageIo&) = delete;
    PageIo& operator=(const PageIo&) = delete;

    virtual std::uint64_t sizeBytes() = 0;

    /// Fills all of `bytes`. Fails if the file ends before.
    virtual void read(std::uint64_t offset, std::span<std::uint8_t> bytes) = 0;
    virtual void write(std::uint64_t offset, std::span<const std::uint8_t> bytes) = 0;

    /// Returns when all written bytes are on the disk.
    virtual void sync() = 0;
    virtual void resize(std::uint64_t sizeBytes) = 0;

    /// Takes, changes or releases the one lock of this file. It is far beyond the data, so other programs can still
    /// read. A shared lock needs no right to write. Releasing the lock never fails.
    /// @param wait  how long to try
    /// @return false if somebody else held the lock for all that time; then nothing is locked
    virtual bool lock(LockKind kind, std::chrono::milliseconds wait) = 0;

protected:
    PageIo() = default;
};

/// How long an operation waits for another program of this engine.
inline constexpr std::chrono::milliseconds kLockWait{2000};

/// Offset of the locked byte; no file of this format is that long.
inline constexpr std::uint64_t kLockOffset = 0x4000'0000'0000;

/// A program that waits for the lock also holds this byte, shared or exclusive like the lock itself. So readers that
/// follow one another cannot keep a waiting writer out, and writers cannot keep out a waiting reader.
inline constexpr std::uint64_t kTurnOffset = kLockOffset + 1;

enum class OpenMode {
    Read,
    ReadWrite,
    CreateNew,  ///< for reading and writing; fails if the file exists
};

/// Opens a file that other programs may have open for reading and writing, too.
/// @throws RuntimeError in the original engine's words: file or folder missing, in use, no permission
std::unique_ptr<PageIo> openFile(const base::Text& path, OpenMode mode);

}  // namespace jet
