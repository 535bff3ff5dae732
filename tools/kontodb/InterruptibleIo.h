#pragma once

#include "jet/storage/PageIo.h"
#include "tools/kontodb/Signals.h"

namespace kontodb {

/// A file that is being made. Each read and write throws Interrupted if the program was told to end.
class InterruptibleIo final : public jet::PageIo {
public:
    /// @param io  must outlive this
    explicit InterruptibleIo(jet::PageIo& io) : io_(io) {}

    std::uint64_t sizeBytes() override { return io_.sizeBytes(); }
    void read(std::uint64_t offset, std::span<std::uint8_t> bytes) override {
        Interruption::check();
        io_.read(offset, bytes);
    }
    void write(std::uint64_t offset, std::span<const std::uint8_t> bytes) override {
        Interruption::check();
        io_.write(offset, bytes);
    }
    void sync() override { io_.sync(); }
    void resize(std::uint64_t sizeBytes) override { io_.resize(sizeBytes); }
    bool lock(jet::LockKind kind, std::chrono::milliseconds wait) override { return io_.lock(kind, wait); }

private:
    jet::PageIo& io_;
};

}  // namespace kontodb
