#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace jet {

/// The 64-bit cyclic redundancy check with the reflected polynomial C96C5795D7870F42. Two different sectors have the
/// same checksum once in 2^64 cases. It does not protect against changes made on purpose.
inline std::uint64_t checksum(std::span<const std::uint8_t> bytes) {
    static constexpr auto kTable = [] {
        std::array<std::uint64_t, 256> table{};
        for (std::size_t byte = 0; byte < table.size(); ++byte) {
            std::uint64_t value = byte;
            for (int bit = 0; bit < 8; ++bit)
                value = (value & 1U) != 0 ? (value >> 1U) ^ 0xC96C5795D7870F42U : value >> 1U;
            table[byte] = value;
        }
        return table;
    }();
    std::uint64_t value = ~std::uint64_t{0};
    for (const std::uint8_t byte : bytes)
        value = kTable[static_cast<std::uint8_t>(value) ^ byte] ^ (value >> 8U);
    return ~value;
}

}  // namespace jet
