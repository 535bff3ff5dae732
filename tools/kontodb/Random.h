#pragma once

#include <cstdint>

namespace kontodb {

/// The same numbers from the same seed on every machine (the splitmix64 sequence); not for secrets.
class Random {
public:
    explicit Random(std::uint64_t seed) : state_(seed) {}

    std::uint64_t next() {
        state_ += 0x9E3779B97F4A7C15U;
        std::uint64_t z = state_;
        z = (z ^ (z >> 30U)) * 0xBF58476D1CE4E5B9U;
        z = (z ^ (z >> 27U)) * 0x94D049BB133111EBU;
        return z ^ (z >> 31U);
    }

    /// A number from 0 to count - 1; count from 1 to a million.
    std::uint32_t below(std::uint32_t count) { return static_cast<std::uint32_t>(((next() >> 32U) * count) >> 32U); }

    bool chance(std::uint32_t percent) { return below(100) < percent; }

private:
    std::uint64_t state_;
};

}  // namespace kontodb
