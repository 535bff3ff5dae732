#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "base/Value.h"
#include "jet/page/PageSource.h"
#include "jet/table/DefinitionLayout.h"
#include "jet/value/Column.h"

namespace jet {

inline constexpr std::size_t kMaxColumns = 255;
inline constexpr std::size_t kMaxIndexColumns = 10;

struct IndexColumn {
    std::uint16_t columnNumber = 0;
    bool ascending = true;
};

/// An index data block: the tree, its columns and its rules.
struct IndexDefinition {
    static constexpr std::size_t kBytes = 52;
    static constexpr std::uint8_t kUnique = 0x01;
    static constexpr std::uint8_t kIgnoreNulls = 0x02;
    static constexpr std::uint8_t kRequired = 0x08;
    static constexpr std::uint8_t kAlways = 0x80;  ///< set in every index

    std::vector<IndexColumn> columns;
    std::uint8_t flags = kAlways;
    PageNumber rootPage = 0;
    RowPointer usageMap;
    std::uint32_t distinctKeys = 0;                           ///< a hint, often out of date
    std::array<std::uint8_t, kStatisticsBytes> statistics{};  ///< as read
    std::array<std::uint8_t, kBytes> block{};                 ///< as read

    base::Text name;  ///< of the primary key, otherwise of the first ordinary logical index of this block
    bool isPrimary = false;

    bool isUnique() const { return (flags & kUnique) != 0; }
    bool ignoresNulls() const { return (flags & kIgnoreNulls) != 0; }
    bool isRequired() const { return (flags & kRequired) != 0; }
};

/// A name of an index data block: an ordinary index, the primary key, or one side of an enforced relationship.
struct LogicalIndex {
    static constexpr std::size_t kBytes = 28;
    enum class Kind : std::uint8_t { Ordinary = 0, PrimaryKey = 1, ForeignKey = 2 };
    enum class Side : std::uint8_t { None = 0, Referenced = 1, Referencing = 2 };

    base::Text name;
    std::uint32_t number = 0;     ///< unique in the table; not its position
    std::uint32_t dataBlock = 0;  ///< position in TableDefinition::indexes
    Kind kind = Kind::Ordinary;
    Side side = Side::None;
    std::uint32_t partnerNumber = 0xFFFFFFFF;   ///< foreign keys: index number in the other table
    PageNumber partnerTable = 0;                ///< foreign keys: definition of the other table
    std::uint8_t updateRule = 4;                ///< foreign keys: 1 = cascade, 0 = not; other indexes: 4
    std::uint8_t deleteRule = 4;                ///< foreign keys: 1 cascade, 2 set null; other indexes: 4
    std::array<std::uint8_t, kBytes> record{};  ///< as read
};

struct LongValueMaps {
    std::uint16_t columnNumber = 0;
    RowPointer owned;
    RowPointer pagesWithSpace;  ///< may be none
};

/// The definition of a table. DefinitionLayout.h describes its bytes.
class TableDefinition {
public:
    /// @param page  the first page of the chain, which identifies the table
    /// @throws RuntimeError (damage)
    static TableDefinition read(PageSource& source, PageNumber page);

    /// The same for joined bytes. The chain of the result is empty.
    /// @throws RuntimeError (damage)
    static TableDefinition decode(base::ByteView joined, PageNumber page);

    /// The joined bytes, the first page's 8 bytes included.
    base::Bytes encode() const;

    PageNumber page = 0;
    std::vector<PageNumber> chain;  ///< all pages, the first included
    std::uint32_t rowCount = 0;     ///< a hint, may be out of date
    std::uint32_t lastAutoNumber = 0;
    std::uint8_t kind = 'N';
    std::uint16_t columnsEver = 0;
    std::uint16_t variableColumnsEver = 0;
    RowPointer ownedPages;
    RowPointer pagesWithSpace;
    std::vector<Column> columns;  ///< in stored order
    std::vector<IndexDefinition> indexes;
    std::vector<LogicalIndex> logicalIndexes;  ///< in stored order: by name
    std::vector<LongValueMaps> longValueMaps;
    std::array<std::uint8_t, 16> kept{{1}};  ///< bytes 24 to 39

    bool isSystem() const { return kind == 'S'; }

    /// Bytes of the fixed area of a row.
    std::size_t fixedAreaBytes() const;

    /// The columns in the order of SELECT *.
    std::vector<const Column*> columnsForDisplay() const;

    /// @return null if there is none; names are compared as the database compares text
    const Column* column(base::TextView name) const;
    const Column* columnNumbered(std::uint16_t number) const;

    /// The column of a part of one of this table's own indexes. It always exists, since reading refuses other indexes.
    const Column& columnOf(const IndexColumn& part) const { return *columnNumbered(part.columnNumber); }
};

/// Number of pages for a definition of `joinedBytes` bytes.
std::size_t definitionPageCount(std::size_t joinedBytes);

/// Cuts joined bytes into whole pages.
/// @param chain  the pages' numbers, definitionPageCount() of them
std::vector<base::Bytes> definitionPages(const base::Bytes& joined, std::span<const PageNumber> chain);

}  // namespace jet
