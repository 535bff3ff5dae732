#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <span>
#include <vector>

namespace jet::sql {

/// Many pieces of bytes, kept together in blocks that never move.
class ByteStore {
public:
    /// @return the copy, valid as long as the store
    std::span<const std::uint8_t> put(std::span<const std::uint8_t> piece);

private:
    struct Release {
        std::align_val_t alignment;
        void operator()(std::uint8_t* block) const { ::operator delete(block, alignment); }
    };

    void addBlock(std::size_t fewestBytes);

    std::vector<std::unique_ptr<std::uint8_t, Release>> blocks_;
    std::uint8_t* free_ = nullptr;  ///< of the last block
    std::size_t freeBytes_ = 0;
};

}  // namespace jet::sql
