#pragma once

#include <algorithm>

#include "jet/storage/PageIo.h"
#include "tools/kontodb/Progress.h"
#include "tools/kontodb/Signals.h"

namespace kontodb {

/// A file that is being made. Each read and write throws Interrupted if the program was told to end.
class InterruptibleIo final : public jet::PageIo {
public:
    /// @param io  must outlive this
    explicit InterruptibleIo(jet::PageIo& io) : io_(io) {}

    /// The same, and the progress of writing it in ascending order.
    /// @param progress    must outlive this
    /// @param likelySize  of the whole file, in bytes
    InterruptibleIo(jet::PageIo& io, Progress& progress, std::uint64_t likelySize)
        : io_(io), progress_(&progress), likelySize_(likelySize) {}

    std::uint64_t sizeBytes() override { return io_.sizeBytes(); }
    void read(std::uint64_t offset, std::span<std::uint8_t> bytes) override {
        Interruption::check();
        io_.read(offset, bytes);
    }
    void write(std::uint64_t offset, std::span<const std::uint8_t> bytes) override {
        Interruption::check();
        io_.write(offset, bytes);
        if (progress_ != nullptr) progress_->at(std::min(offset + bytes.size(), likelySize_), likelySize_);
    }
    void sync() override { io_.sync(); }
    void resize(std::uint64_t sizeBytes) override { io_.resize(sizeBytes); }
    bool lock(jet::LockKind kind, std::chrono::milliseconds wait) override { return io_.lock(kind, wait); }

private:
    jet::PageIo& io_;
    Progress* progress_ = nullptr;
    std::uint64_t likelySize_ = 0;
};

}  // namespace kontodb
