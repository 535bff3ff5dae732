#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <random>

#include "base/Value.h"

namespace jet {

/// Extreme numbers for offsets, counts, lengths and page numbers.
inline constexpr std::uint32_t kExtremes[] = {0,      1,      0xFF,    0x1FFF,     0x7FFF,
                                              0x8000, 0xFFFF, 0x10000, 0x7FFFFFFF, 0xFFFFFFFF};

/// Changes files at random: a byte, a number or a page in various places.
class Mutator {
public:
    explicit Mutator(std::uint32_t randomSeed) : random_(randomSeed) {}

    base::Bytes mutate(const base::Bytes& sound) {
        base::Bytes file = sound;
        const std::uint32_t changes = 1 + below(3);
        for (std::uint32_t i = 0; i < changes && !file.empty(); ++i)
            change(file);
        return file;
    }

    std::mt19937& engine() { return random_; }
    std::uint32_t below(std::size_t limit) { return static_cast<std::uint32_t>(random_() % limit); }

private:
    /// Half of the places are at the beginning of a page, where its header is.
    std::size_t place(const base::Bytes& file) {
        if (below(2) == 0) return below(file.size());
        const std::size_t pageStart = below((file.size() + 4095) / 4096) * std::size_t{4096};
        return std::min(pageStart + below(96), file.size() - 1);
    }

    void change(base::Bytes& file) {
        switch (below(8)) {
            case 0:
                file.resize(below(file.size() + 1));
                break;
            case 1:
                swapPages(file);
                break;
            case 2:
            case 3:
                putExtreme(file);
                break;
            case 4:
                file[place(file)] = static_cast<std::uint8_t>(below(256));
                break;
            default:
                file[place(file)] ^= static_cast<std::uint8_t>(1U << below(8));
        }
    }

    void swapPages(base::Bytes& file) {
        const std::size_t pages = file.size() / 4096;
        if (pages < 2) return;
        const auto page = [&](std::size_t number) { return file.begin() + static_cast<std::ptrdiff_t>(number * 4096); };
        const std::size_t from = below(pages);
        std::copy_n(page(from), 4096, page(below(pages)));
    }

    void putExtreme(base::Bytes& file) {
        const std::size_t at = place(file);
        const std::size_t count = std::min<std::size_t>(std::size_t{1} << below(3), file.size() - at);
        const std::uint32_t value = kExtremes[below(std::size(kExtremes))];
        for (std::size_t i = 0; i < count; ++i)
            file[at + i] = static_cast<std::uint8_t>(value >> (8 * i));
    }

    std::mt19937 random_;
};

}  // namespace jet
