#pragma once

#include <algorithm>

#include "base/Value.h"
#include "jet/Errors.h"
#include "jet/storage/PageIo.h"

namespace test {

/// A file in memory. test::Machine can do more: it has a journal and simulates faults.
class MemoryIo : public jet::PageIo {
public:
    explicit MemoryIo(base::Bytes bytes = {}) : bytes_(std::move(bytes)) {}

    const base::Bytes& bytes() const { return bytes_; }

    std::uint64_t sizeBytes() override { return bytes_.size(); }
    void read(std::uint64_t offset, std::span<std::uint8_t> bytes) override {
        if (offset > bytes_.size() || bytes.size() > bytes_.size() - offset) throw jet::deviceFailed(u"Speicher", 0);
        std::copy_n(bytes_.begin() + static_cast<std::ptrdiff_t>(offset), bytes.size(), bytes.begin());
    }
    void write(std::uint64_t offset, std::span<const std::uint8_t> bytes) override {
        bytes_.resize(std::max(bytes_.size(), static_cast<std::size_t>(offset) + bytes.size()));
        std::ranges::copy(bytes, bytes_.begin() + static_cast<std::ptrdiff_t>(offset));
    }
    void sync() override {}
    void resize(std::uint64_t sizeBytes) override { bytes_.resize(static_cast<std::size_t>(sizeBytes)); }
    bool lock(jet::LockKind, std::chrono::milliseconds) override { return true; }

private:
    base::Bytes bytes_;
};

}  // namespace test
