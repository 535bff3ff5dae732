#pragma once

#include "base/Value.h"
#include "jet/storage/PageIo.h"

namespace jet {

/// A file in memory. No other program can open it, so its lock is always free.
class MemoryIo : public PageIo {
public:
    explicit MemoryIo(base::Bytes bytes = {}) : bytes_(std::move(bytes)) {}

    const base::Bytes& bytes() const { return bytes_; }

    std::uint64_t sizeBytes() override { return bytes_.size(); }
    void read(std::uint64_t offset, std::span<std::uint8_t> bytes) override;
    void write(std::uint64_t offset, std::span<const std::uint8_t> bytes) override;
    void sync() override {}
    void resize(std::uint64_t sizeBytes) override;
    bool lock(LockKind, std::chrono::milliseconds) override { return true; }

private:
    base::Bytes bytes_;
};

}  // namespace jet
