#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "base/ByteView.h"
#include "base/Value.h"
#include "jet/RowPointer.h"
#include "jet/table/TableDefinition.h"
#include "jet/value/Column.h"

/// The bytes of a row:
///
///     u16          column count when the row was written
///                  fixed area: all fixed columns, null ones too
///                  variable data
///                  [padding]
///     u16          end of the variable data
///     u16 * v      offsets of the variable columns, the last one first
///     u16          v, number of variable columns when the row was written
///                  null mask: bit (n & 7) of byte (n >> 3) set = column n is not null; a Boolean's value
///
/// A table that never had a variable column has rows without the three u16 parts after the padding. See
/// docs/file-format.md, "Rows".
namespace jet {

inline std::size_t nullMaskBytes(std::size_t columnCount) {
    return (columnCount + 7) / 8;
}

/// A view of a row. It owns nothing and is cheap to make. A column is searched only when it is asked for.
class RowView {
public:
    RowView() = default;

    /// @param bytes       of the row, without its slot; must outlive the view, as must the definition
    /// @param place       the row, for error messages
    /// @throws RuntimeError (damage) if counts and offsets of the row are impossible
    RowView(std::span<const std::uint8_t> bytes, const TableDefinition& definition, RowPointer place);

    RowPointer place() const { return place_; }
    std::span<const std::uint8_t> bytes() const { return bytes_; }
    const TableDefinition& definition() const { return *definition_; }

    /// Never true for a Boolean.
    bool isNull(const Column& column) const {
        if (column.type == ColumnType::Boolean) return false;
        return !bit(column.number) || (!column.isFixed() && column.variableIndex >= variableCount_);
    }

    /// The value of a Boolean column.
    bool flag(const Column& column) const { return bit(column.number); }

    /// The bytes of a column that is neither null nor Boolean; of a long value, its reference.
    /// @throws RuntimeError (damage)
    std::span<const std::uint8_t> stored(const Column& column) const;

private:
    bool bit(std::uint16_t number) const {
        if (number >= columnCount_) return false;
        return ((bytes_[maskStart_ + number / 8U] >> (number % 8U)) & 1U) != 0;
    }
    std::size_t variableOffset(std::size_t index) const;
    [[noreturn]] void failOutside(const Column& column) const;

    std::span<const std::uint8_t> bytes_;
    const TableDefinition* definition_ = nullptr;
    RowPointer place_;
    std::uint16_t columnCount_ = 0;
    std::uint16_t variableCount_ = 0;
    std::uint16_t maskStart_ = 0;
    std::uint16_t offsetsEnd_ = 0;  ///< offset i is at offsetsEnd_ - 2 * (i + 1)
    std::uint16_t fixedEnd_ = 0;
    std::uint16_t dataEnd_ = 0;
};

/// The stored bytes of a column for a new row; nullopt is null. A Boolean has one byte: 0 false, else true.
using Cell = std::optional<base::Bytes>;

/// Makes a row with the definition's present column counts.
/// @param cells  by column number, columnsEver of them; null for deleted columns
/// @return the row. It may be too long for a page; the caller must check that.
base::Bytes encodeRow(const TableDefinition& definition, std::span<const Cell> cells);

/// The longest row that fits on a data page.
inline constexpr std::size_t kMaxRowBytes = 4080;

}  // namespace jet
