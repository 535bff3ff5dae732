#pragma once

#include <span>
#include <vector>

#include "jet/page/DataPage.h"

namespace jet {

/// At most this many pointers are followed to a moved row, so that a loop ends. Real files have one pointer.
inline constexpr std::size_t kMaxMoves = 16;

/// The bytes of a moved row, and the pointers that lead to them.
struct MovedRow {
    std::vector<RowPointer> places;  ///< the targets of the pointers, in order; the last has the bytes
    DataPage page;                   ///< of the bytes; keeps them alive
    std::span<const std::uint8_t> bytes;
};

/// Follows the pointers from a slot in the state Moved to the row's bytes.
/// @param row    the place of the slot, for error messages
/// @param owner  the owner of all pages
/// @throws RuntimeError (damage) if they do not lead to a hidden slot, or form a loop
MovedRow followMovedRow(PageSource& source, RowPointer row, Slot slot, std::uint32_t owner);

}  // namespace jet
