#pragma once

#include <cstdint>
#include <span>

#include "base/Value.h"
#include "jet/WriteErrors.h"
#include "jet/page/PageSource.h"

/// Values of Memo and OLE columns. The row holds a reference of 12 bytes:
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
inline constexpr std::size_t kLongValuePartBytes = 4072;  ///< data in a full part of a chain
inline constexpr std::size_t kMaxLongValueRowBytes = 4076;
inline constexpr std::size_t kMaxLongValueBytes = 0x3FFFFFFF;

enum class LongValueKind : std::uint32_t { Chain = 0, SingleRow = 0x40000000, Inline = 0x80000000 };

struct LongValueReference {
    LongValueKind kind = LongValueKind::Inline;
    std::uint32_t lengthBytes = 0;
    RowPointer first;
    std::uint32_t stamp = 0;

    /// @param stored  the bytes in the row, at least 12
    /// @param place   the row, for error messages
    static LongValueReference read(std::span<const std::uint8_t> stored, RowPointer place);
    void append(base::Bytes& bytes) const;
};

/// Reads all bytes of a long value; there are never more than the file can hold.
/// @param stored  the column's bytes in the row; if empty, the value is empty
/// @throws RuntimeError (damage) if a part is missing, used twice, too long or too short
base::Bytes readLongValue(PageSource& source, std::span<const std::uint8_t> stored, RowPointer place);

/// The column's bytes in the row for a value that is stored in the row, whatever its length.
base::Bytes inlineLongValue(std::span<const std::uint8_t> value);

/// Stores a value on pages: in one row if it fits, otherwise in a chain in which only the last part is not full. The
/// last part is written first, because each part points to the next one.
/// @param rows  has add() for a row, and addAlone() for a row that shares its page with no other
/// @return the column's bytes in the row
/// @throws RuntimeError if the value is longer than the format allows
template <typename Rows>
base::Bytes placeLongValue(Rows& rows, std::span<const std::uint8_t> value) {
    if (value.size() > kMaxLongValueBytes) throw rowTooLong();
    LongValueReference reference{LongValueKind::SingleRow, static_cast<std::uint32_t>(value.size()), {}, 0};
    if (value.size() <= kMaxLongValueRowBytes) {
        reference.first = rows.add(value);
    } else {
        reference.kind = LongValueKind::Chain;
        for (std::size_t end = value.size(); end > 0;) {
            const std::size_t begin = (end - 1) / kLongValuePartBytes * kLongValuePartBytes;
            base::Bytes part;
            base::appendLittleEndian(part, reference.first.packed(), kRowPointerBytes);
            part.insert(part.end(), value.begin() + static_cast<std::ptrdiff_t>(begin),
                        value.begin() + static_cast<std::ptrdiff_t>(end));
            reference.first = rows.addAlone(part);
            end = begin;
        }
    }
    base::Bytes stored;
    reference.append(stored);
    return stored;
}

}  // namespace jet
