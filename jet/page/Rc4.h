#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace jet {

/// The RC4 stream cipher. The format masks the header and encodes pages with it; that protects nothing.
class Rc4 {
public:
    /// @param key  1 to 256 bytes
    explicit Rc4(std::span<const std::uint8_t> key);

    /// XORs the next bytes of the key stream with `bytes`. This both encodes and decodes.
    void apply(std::span<std::uint8_t> bytes);

private:
    std::array<std::uint8_t, 256> state_{};
    std::uint8_t i_ = 0;
    std::uint8_t j_ = 0;
};

}  // namespace jet
