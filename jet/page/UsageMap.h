#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "base/Value.h"
#include "jet/page/PageSource.h"

/// A set of pages, stored as a row of a data page.
///
///     kind 0   u8 0, u32 first page, then bits: bit i (i & 7 of byte i >> 3) is page first + i
///     kind 1   u8 1, then u32 page numbers of bitmap pages; entry k covers the 32736 pages from k * 32736, 0 = none
///     bitmap   05 01 00 00, then 4092 bytes of bits
///
/// Rows of kind 0 have any length, because the original engine makes them longer in place. Owned maps say which pages
/// belong to a table, index or column. In the global map, however, a set bit is a free page. See docs/file-format.md,
/// "Usage maps".
namespace jet {

inline constexpr std::uint8_t kInlineMap = 0;        ///< kind of row
inline constexpr std::uint8_t kReferenceMap = 1;     ///< kind of row
inline constexpr std::size_t kFirstPageOffset = 1;   ///< in a row of kind 0
inline constexpr std::size_t kInlineBitsOffset = 5;  ///< in a row of kind 0
inline constexpr std::size_t kBitmapBitsOffset = 4;  ///< on a bitmap page
inline constexpr std::size_t kMapEntryBytes = 4;     ///< in a row of kind 1
inline constexpr std::size_t kUsageMapRowBytes = 69;
inline constexpr std::size_t kMapRowStepBytes = 4;    ///< the original engine makes rows longer by this much at a time
inline constexpr std::uint32_t kBitmapPages = 32736;  ///< pages that one bitmap page covers

inline constexpr PageNumber kGlobalMapPage = 1;

/// The owner that the header of a page of maps names.
constexpr std::uint32_t mapOwner(PageNumber page) {
    return page == kGlobalMapPage ? kGlobalMapPage : 0;
}

/// Length of a row of kind 0 with bits for this many pages.
constexpr std::size_t inlineRowBytes(std::uint64_t pageCount) {
    return kInlineBitsOffset + static_cast<std::size_t>((pageCount + 7) / 8);
}

/// Offset of entry n in a row of kind 1. This is also the length of a row with n entries.
constexpr std::size_t mapEntryOffset(std::size_t entry) {
    return 1 + kMapEntryBytes * entry;
}

/// Number of entries in a row of kind 1 of this length.
constexpr std::size_t mapEntryCount(std::size_t rowBytes) {
    return (rowBytes - 1) / kMapEntryBytes;
}

/// The first set bit whose number is at least `from`.
std::optional<std::size_t> nextBit(std::span<const std::uint8_t> bits, std::size_t from);

inline void putBit(std::span<std::uint8_t> bits, std::size_t number, bool isSet = true) {
    const auto mask = static_cast<std::uint8_t>(1U << (number % 8));
    std::uint8_t& byte = bits[number / 8];
    byte = static_cast<std::uint8_t>(isSet ? byte | mask : byte & ~mask);
}

class UsageMap {
public:
    UsageMap() = default;

    /// @param row  the row of the map; the pointer "none" gives the empty map
    /// @throws RuntimeError (damage) if the row or a bitmap page is not sound
    static UsageMap read(PageSource& source, RowPointer row);

    bool contains(PageNumber page) const;

    /// The first page of the map whose number is at least `from`.
    std::optional<PageNumber> next(PageNumber from) const;

    bool empty() const { return !next(0).has_value(); }

    /// Makes the row of a map of kind 0.
    /// @param firstPage  a multiple of 8
    /// @param pages      each must have a bit in the row
    static base::Bytes inlineRow(PageNumber firstPage, std::span<const PageNumber> pages,
                                 std::size_t rowBytes = kUsageMapRowBytes);

    /// Makes the row of a map of kind 1; entry k is the k-th bitmap page.
    static base::Bytes referenceRow(std::span<const PageNumber> bitmapPages, std::size_t rowBytes = kUsageMapRowBytes);

private:
    struct Piece {
        PageNumber firstPage;
        base::Bytes bits;
    };
    std::vector<Piece> pieces_;  ///< ascending, without overlap
};

/// The new length, in the usual steps, of a row that must have at least `neededBytes`.
std::size_t longerMapRow(std::size_t rowBytes, std::size_t neededBytes);

/// Makes an empty bitmap page.
/// @param page  4096 bytes
/// @param fill  value of each byte of bits: 0 or 0xFF
void clearBitmapPage(std::span<std::uint8_t> page, std::uint8_t fill);

}  // namespace jet
