#include <algorithm>
#include <cassert>

#include "base/ByteView.h"
#include "jet/table/TableDefinition.h"

namespace jet {
namespace {

/// Appends to the joined bytes of a definition.
class Writer {
public:
    explicit Writer(base::Bytes& bytes) : bytes_(bytes) {}

    void u16(std::uint16_t value) { base::appendLittleEndian(bytes_, value, 2); }
    void u32(std::uint32_t value) { base::appendLittleEndian(bytes_, value, 4); }
    void append(std::span<const std::uint8_t> bytes) { bytes_.insert(bytes_.end(), bytes.begin(), bytes.end()); }
    void name(base::TextView text) {
        u16(static_cast<std::uint16_t>(2 * text.size()));
        for (const char16_t unit : text)
            u16(static_cast<std::uint16_t>(unit));
    }

private:
    base::Bytes& bytes_;
};

std::array<std::uint8_t, Column::kDescriptorBytes> encodeColumn(const Column& column) {
    auto bytes = column.descriptor;
    bytes[ColumnAt::kType] = static_cast<std::uint8_t>(column.type);
    base::putU32(bytes, ColumnAt::kMark, kDefinitionMark);
    base::putU16(bytes, ColumnAt::kNumber, column.number);
    base::putU16(bytes, ColumnAt::kVariableIndex, column.variableIndex);
    base::putU16(bytes, ColumnAt::kDisplayPosition, column.displayPosition);
    if (column.type == ColumnType::Numeric) {
        bytes[ColumnAt::kPrecision] = column.precision;
        bytes[ColumnAt::kScale] = column.scale;
    } else {
        base::putU16(bytes, ColumnAt::kTextOrder, column.textOrder.lcid);
        bytes[ColumnAt::kTextOrderVersion] = column.textOrder.version;
    }
    bytes[ColumnAt::kFlags] = column.flags;
    bytes[ColumnAt::kExtendedFlags] = column.extendedFlags;
    base::putU16(bytes, ColumnAt::kFixedOffset, column.fixedOffset);
    base::putU16(bytes, ColumnAt::kLength, column.lengthBytes);
    return bytes;
}

std::array<std::uint8_t, IndexDefinition::kBytes> encodeIndex(const IndexDefinition& index) {
    assert(!index.columns.empty() && index.columns.size() <= kMaxIndexColumns);
    auto bytes = index.block;
    base::putU32(bytes, IndexBlockAt::kMark, kIndexBlockMark);
    for (std::size_t i = 0; i < kMaxIndexColumns; ++i) {
        const bool isUsed = i < index.columns.size();
        base::putU16(bytes, IndexBlockAt::columnNumber(i), isUsed ? index.columns[i].columnNumber : kNoColumn);
        if (isUsed) bytes[IndexBlockAt::columnOrder(i)] = index.columns[i].ascending ? 1 : 0;
    }
    base::putU32(bytes, IndexBlockAt::kUsageMap, index.usageMap.packed());
    base::putU32(bytes, IndexBlockAt::kRootPage, index.rootPage);
    bytes[IndexBlockAt::kFlags] = index.flags;
    return bytes;
}

std::array<std::uint8_t, LogicalIndex::kBytes> encodeLogicalIndex(const LogicalIndex& index) {
    auto bytes = index.record;
    base::putU32(bytes, LogicalIndexAt::kMark, kDefinitionMark);
    base::putU32(bytes, LogicalIndexAt::kNumber, index.number);
    base::putU32(bytes, LogicalIndexAt::kDataBlock, index.dataBlock);
    bytes[LogicalIndexAt::kSide] = static_cast<std::uint8_t>(index.side);
    base::putU32(bytes, LogicalIndexAt::kPartnerNumber, index.partnerNumber);
    base::putU32(bytes, LogicalIndexAt::kPartnerTable, index.partnerTable);
    bytes[LogicalIndexAt::kUpdateRule] = index.updateRule;
    bytes[LogicalIndexAt::kDeleteRule] = index.deleteRule;
    bytes[LogicalIndexAt::kKind] = static_cast<std::uint8_t>(index.kind);
    return bytes;
}

void writeBlock(const TableDefinition& definition, std::span<std::uint8_t> bytes) {
    bytes[0] = static_cast<std::uint8_t>(PageKind::TableDefinition);
    bytes[1] = 1;
    base::putU32(bytes, DefinitionAt::kMark, kDefinitionMark);
    base::putU32(bytes, DefinitionAt::kRowCount, definition.rowCount);
    base::putU32(bytes, DefinitionAt::kAutoNumber, definition.lastAutoNumber);
    std::copy(definition.kept.begin(), definition.kept.end(), bytes.begin() + DefinitionAt::kKept);
    bytes[DefinitionAt::kKind] = definition.kind;
    base::putU16(bytes, DefinitionAt::kColumnsEver, definition.columnsEver);
    base::putU16(bytes, DefinitionAt::kVariableEver, definition.variableColumnsEver);
    base::putU16(bytes, DefinitionAt::kColumns, static_cast<std::uint16_t>(definition.columns.size()));
    base::putU32(bytes, DefinitionAt::kLogicalIndexes, static_cast<std::uint32_t>(definition.logicalIndexes.size()));
    base::putU32(bytes, DefinitionAt::kIndexes, static_cast<std::uint32_t>(definition.indexes.size()));
    base::putU32(bytes, DefinitionAt::kOwnedPages, definition.ownedPages.packed());
    base::putU32(bytes, DefinitionAt::kPagesWithSpace, definition.pagesWithSpace.packed());
}

}  // namespace

base::Bytes TableDefinition::encode() const {
    base::Bytes bytes(DefinitionAt::kStatistics, 0);
    writeBlock(*this, bytes);
    Writer writer(bytes);
    for (const IndexDefinition& index : indexes) {
        auto counts = index.statistics;
        base::putU32(counts, StatisticsAt::kDistinctKeys, index.distinctKeys);
        writer.append(counts);
    }
    for (const Column& each : columns)
        writer.append(encodeColumn(each));
    for (const Column& each : columns)
        writer.name(each.name);
    for (const IndexDefinition& index : indexes)
        writer.append(encodeIndex(index));
    for (const LogicalIndex& index : logicalIndexes)
        writer.append(encodeLogicalIndex(index));
    for (const LogicalIndex& index : logicalIndexes)
        writer.name(index.name);
    for (const LongValueMaps& maps : longValueMaps) {
        writer.u16(maps.columnNumber);
        writer.u32(maps.owned.packed());
        writer.u32(maps.pagesWithSpace.packed());
    }
    writer.u16(kNoColumn);
    base::putU32(bytes, DefinitionAt::kLength, static_cast<std::uint32_t>(bytes.size()));
    return bytes;
}
std::size_t definitionPageCount(std::size_t joinedBytes) {
    if (joinedBytes <= kPageSize) return 1;
    constexpr std::size_t kRoom = kPageSize - DefinitionPageAt::kContent;
    return 1 + (joinedBytes - kPageSize + kRoom - 1) / kRoom;
}

std::vector<base::Bytes> definitionPages(const base::Bytes& joined, std::span<const PageNumber> chain) {
    assert(chain.size() == definitionPageCount(joined.size()));
    std::vector<base::Bytes> pages;
    std::span<const std::uint8_t> rest{joined};
    for (std::size_t i = 0; i < chain.size(); ++i) {
        base::Bytes page(kPageSize, 0);
        const std::size_t start = i == 0 ? 0 : DefinitionPageAt::kContent;
        const std::size_t count = std::min(kPageSize - start, rest.size());
        std::copy_n(rest.begin(), count, page.begin() + static_cast<std::ptrdiff_t>(start));
        rest = rest.subspan(count);
        const std::size_t free = kPageSize - start - count;
        beginPage(page, PageKind::TableDefinition);
        base::putU16(
            page, kFreeBytesOffset,
            static_cast<std::uint16_t>(free > DefinitionPageAt::kContent ? free - DefinitionPageAt::kContent : 0));
        base::putU32(page, DefinitionPageAt::kNextPage, i + 1 < chain.size() ? chain[i + 1] : 0);
        pages.push_back(std::move(page));
    }
    return pages;
}

}  // namespace jet
