#pragma once

#include <cstdint>
#include <span>

#include "base/Value.h"
#include "jet/PageSource.h"

/// Values of Memo and OLE columns. In the row lies a reference of 12 bytes:
///
///     0   4   length of the stored bytes (30 bits), kind in the top 2 bits
///     4   4   row pointer of the first part
///     8   4   stamp of a chain, else 0
///
/// Kinds: 8 inline, the bytes follow the reference; 4 one row of a long value page; 0 a chain, where each part is
/// the only row of its page: a row pointer to the next part (0 at the last), then data. See docs/file-format.md,
/// "Long values".
namespace jet {

inline constexpr std::size_t kLongValueReferenceBytes = 12;
inline constexpr std::size_t kMaxInlineLongValueBytes = 64;
inline constexpr std::size_t kLongValuePartBytes = 4072;  ///< of data in a full part of a chain
inline constexpr std::size_t kMaxLongValueRowBytes = 4076;

enum class LongValueKind : std::uint32_t { Chain = 0, SingleRow = 0x40000000, Inline = 0x80000000 };

struct LongValueReference {
    LongValueKind kind = LongValueKind::Inline;
    std::uint32_t lengthBytes = 0;
    RowPointer first;
    std::uint32_t stamp = 0;

    /// @param stored  from the row, at least 12 bytes
    /// @param place   the row, for error messages
    static LongValueReference read(std::span<const std::uint8_t> stored, RowPointer place);
    void append(base::Bytes& bytes) const;
};

/// All bytes of a long value. Never more than the file can hold.
/// @param stored  the column's bytes in the row; none at all is the empty value
/// @throws RuntimeError (damage) if a part is missing, shared with itself, too long or too short
base::Bytes readLongValue(PageSource& source, std::span<const std::uint8_t> stored, RowPointer place);

/// The column's bytes in the row for a value of at most kMaxInlineLongValueBytes.
base::Bytes inlineLongValue(std::span<const std::uint8_t> value);

}  // namespace jet
