#pragma once

#include <cstddef>
#include <cstdint>

/// The layout of a table definition: one page, or a chain of pages. The bytes of the further pages, from offset
/// 8 on, are appended to those of the first page: the joined bytes.
///
///     page     0 kind 2, 1; 2 free bytes minus 8; 4 next page of the chain, 0 for none
///     offset size (in the joined bytes)
///     8      4    length of the joined bytes, with the first page's 8 bytes and the end mark
///     12     4    1625
///     16     4    number of rows; may be out of date
///     20     4    last auto number given
///     24     1    1
///     25     15   of unknown meaning
///     40     1    'N' user table, 'S' one of the four system tables
///     41     2    columns ever added; the column count of new rows
///     43     2    variable columns ever added
///     45     2    columns
///     47     4    logical indexes
///     51     4    index data blocks
///     55     4    row of the map of owned data pages
///     59     4    row of the map of data pages with free space
///     63          12 bytes for each index data block: u32, number of distinct keys, 0
///                 column descriptors, 25 bytes each (Column.h); then their names
///                 index data blocks, 52 bytes each
///                 logical indexes, 28 bytes each; then their names
///                 for each column of long values: u16 number, row of its map of owned pages,
///                 row of its map of pages with space
///                 FF FF
///
/// Names: u16 byte length, UTF-16LE. For the index data blocks and the logical indexes see docs/file-format.md, "Table
/// definitions".
namespace jet {

/// Offsets in each page of a definition; see also kFreeBytesOffset.
struct DefinitionPageAt {
    static constexpr std::size_t kNextPage = 4;
    static constexpr std::size_t kContent = 8;
};

/// Offsets in the joined bytes.
struct DefinitionAt {
    static constexpr std::size_t kLength = 8;
    static constexpr std::size_t kMark = 12;
    static constexpr std::size_t kRowCount = 16;
    static constexpr std::size_t kAutoNumber = 20;
    static constexpr std::size_t kKept = 24;
    static constexpr std::size_t kKind = 40;
    static constexpr std::size_t kColumnsEver = 41;
    static constexpr std::size_t kVariableEver = 43;
    static constexpr std::size_t kColumns = 45;
    static constexpr std::size_t kLogicalIndexes = 47;
    static constexpr std::size_t kIndexes = 51;
    static constexpr std::size_t kOwnedPages = 55;
    static constexpr std::size_t kPagesWithSpace = 59;
    static constexpr std::size_t kStatistics = 63;
};

/// Offsets in the statistics of an index.
struct StatisticsAt {
    static constexpr std::size_t kDistinctKeys = 4;
};

/// Offsets in a column descriptor.
struct ColumnAt {
    static constexpr std::size_t kType = 0;
    static constexpr std::size_t kMark = 1;
    static constexpr std::size_t kNumber = 5;
    static constexpr std::size_t kVariableIndex = 7;
    static constexpr std::size_t kDisplayPosition = 9;
    static constexpr std::size_t kPrecision = 11;  ///< Numeric only; the other types have the text order here
    static constexpr std::size_t kScale = 12;
    static constexpr std::size_t kTextOrder = 11;
    static constexpr std::size_t kTextOrderVersion = 14;
    static constexpr std::size_t kFlags = 15;
    static constexpr std::size_t kExtendedFlags = 16;
    static constexpr std::size_t kFixedOffset = 21;
    static constexpr std::size_t kLength = 23;
};

/// Offsets in an index data block.
struct IndexBlockAt {
    static constexpr std::size_t kMark = 0;
    static constexpr std::size_t kUsageMap = 34;
    static constexpr std::size_t kRootPage = 38;
    static constexpr std::size_t kFlags = 46;

    static constexpr std::size_t columnNumber(std::size_t i) { return 4 + 3 * i; }
    static constexpr std::size_t columnOrder(std::size_t i) { return columnNumber(i) + 2; }
};

/// Offsets in a logical index.
struct LogicalIndexAt {
    static constexpr std::size_t kMark = 0;
    static constexpr std::size_t kNumber = 4;
    static constexpr std::size_t kDataBlock = 8;
    static constexpr std::size_t kSide = 12;
    static constexpr std::size_t kPartnerNumber = 13;
    static constexpr std::size_t kPartnerTable = 17;
    static constexpr std::size_t kUpdateRule = 21;
    static constexpr std::size_t kDeleteRule = 22;
    static constexpr std::size_t kKind = 23;
};

inline constexpr std::uint32_t kDefinitionMark = 1625;  ///< also of columns and logical indexes
inline constexpr std::uint32_t kIndexBlockMark = 1923;
inline constexpr std::uint16_t kNoColumn = 0xFFFF;   ///< unused place in an index; end of the long value maps
inline constexpr std::size_t kStatisticsBytes = 12;  ///< of one index
inline constexpr std::size_t kLongValueMapsBytes = 10;

/// Even 255 columns and 32 indexes with the longest names need fewer pages. A longer chain is damage.
inline constexpr std::size_t kMaxDefinitionPages = 64;

}  // namespace jet
