#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>

/// Addresses inside the file.
namespace jet {

/// Pages count from 0; page n begins at byte n * 4096.
using PageNumber = std::uint32_t;

inline constexpr std::size_t kRowPointerBytes = 4;  ///< as stored

/// The identity of a row, which never changes: its page, and its slot in the offset table of that page.
///
/// Definitions, usage maps, overflow rows and long values store it as one little-endian word, page * 256 + slot. Index
/// entries store the same number big-endian. Page 0 holds no rows, so a pointer to it means "none".
struct RowPointer {
    PageNumber page = 0;
    std::uint8_t slot = 0;

    static RowPointer unpack(std::uint32_t packed) { return {packed >> 8U, static_cast<std::uint8_t>(packed)}; }
    std::uint32_t packed() const { return (page << 8U) | slot; }
    bool isNone() const { return page == 0; }

    // NOLINTNEXTLINE(modernize-use-nullptr): the check takes the 0 inside the comparison for a pointer
    friend auto operator<=>(const RowPointer&, const RowPointer&) = default;
};

}  // namespace jet
