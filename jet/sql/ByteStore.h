#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <span>
#include <vector>

namespace jet::sql {

/// Keeps copies of many byte sequences in large blocks that never move.
class ByteStore {
public:
    /// @return the copy; it is valid as long as this object
    std::span<const std::uint8_t> put(std::span<const std::uint8_t> piece);

private:
    struct Release {
        std::align_val_t alignment;
        void operator()(std::uint8_t* block) const { ::operator delete(block, alignment); }
    };

    void addBlock(std::size_t fewestBytes);

    std::vector<std::unique_ptr<std::uint8_t, Release>> blocks_;
    std::uint8_t* free_ = nullptr;  ///< where the next copy goes in the last block
    std::size_t freeBytes_ = 0;
};

}  // namespace jet::sql
