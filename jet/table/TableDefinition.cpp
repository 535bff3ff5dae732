#include "jet/table/TableDefinition.h"

#include <algorithm>
#include <cassert>
#include <set>

#include "base/ByteView.h"
#include "jet/Errors.h"
#include "jet/value/SortKey.h"

namespace jet {
namespace {

constexpr std::size_t kPageHeaderBytes = 8;
constexpr std::size_t kNextPageOffset = 4;
/// Even 255 columns and 32 indexes with the longest names need less. A longer chain is damage.
constexpr std::size_t kMaxChainPages = 64;

constexpr std::size_t kLengthOffset = 8;
constexpr std::size_t kMarkOffset = 12;
constexpr std::size_t kKeptOffset = 24;
constexpr std::size_t kKindOffset = 40;
constexpr std::size_t kColumnsEverOffset = 41;
constexpr std::size_t kVariableEverOffset = 43;
constexpr std::size_t kColumnsOffset = 45;
constexpr std::size_t kLogicalIndexesOffset = 47;
constexpr std::size_t kIndexesOffset = 51;
constexpr std::size_t kOwnedOffset = 55;
constexpr std::size_t kSpaceOffset = 59;
constexpr std::size_t kLongValueMapsBytes = 10;

/// Offsets in a column descriptor.
struct ColumnAt {
    static constexpr std::size_t kType = 0;
    static constexpr std::size_t kMark = 1;
    static constexpr std::size_t kNumber = 5;
    static constexpr std::size_t kVariableIndex = 7;
    static constexpr std::size_t kDisplayPosition = 9;
    static constexpr std::size_t kPrecision = 11;  ///< Numeric; the other types have an order of text here
    static constexpr std::size_t kScale = 12;
    static constexpr std::size_t kTextOrder = 11;
    static constexpr std::size_t kTextOrderVersion = 14;
    static constexpr std::size_t kFlags = 15;
    static constexpr std::size_t kExtendedFlags = 16;
    static constexpr std::size_t kFixedOffset = 21;
    static constexpr std::size_t kLength = 23;
};

/// Offsets in an index data block.
struct BlockAt {
    static constexpr std::size_t kMark = 0;
    static constexpr std::size_t kUsageMap = 34;
    static constexpr std::size_t kRootPage = 38;
    static constexpr std::size_t kFlags = 46;

    static constexpr std::size_t columnNumber(std::size_t i) { return 4 + 3 * i; }
    static constexpr std::size_t columnOrder(std::size_t i) { return columnNumber(i) + 2; }
};

/// Offsets in a logical index.
struct LogicalAt {
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

constexpr std::uint32_t kMark = 1625;
constexpr std::uint32_t kIndexMark = 1923;
constexpr std::uint16_t kNone = 0xFFFF;

/// Reads the joined bytes from beginning to end.
class Reader {
public:
    Reader(base::ByteView bytes, PageNumber page) : bytes_(bytes), page_(page) {}

    std::uint16_t u16() { return take(2).u16(0); }
    base::ByteView take(std::size_t count) {
        const base::ByteView taken = bytes_.slice(place_, count);
        place_ += count;
        return taken;
    }
    template <std::size_t Count>
    std::array<std::uint8_t, Count> takeArray() {
        std::array<std::uint8_t, Count> taken{};
        const auto bytes = take(Count).bytes();
        std::copy(bytes.begin(), bytes.end(), taken.begin());
        return taken;
    }
    base::Text name() {
        const std::size_t byteCount = u16();
        if (byteCount == 0 || byteCount % 2 != 0)
            throw damaged(page_, u"Ein Name in der Tabellendefinition ist leer oder halb");
        const base::ByteView bytes = take(byteCount);
        base::Text text;
        for (std::size_t i = 0; i < byteCount; i += 2)
            text.push_back(static_cast<char16_t>(bytes.u16(i)));
        return text;
    }

private:
    base::ByteView bytes_;
    PageNumber page_;
    std::size_t place_ = kStatisticsOffset;
};

base::Bytes joinChain(PageSource& source, PageNumber page, std::vector<PageNumber>& chain) {
    base::Bytes joined;
    for (PageNumber next = page; next != 0;) {
        const PageView view = pageOfKind(source, next, PageKind::TableDefinition);
        if (chain.size() == kMaxChainPages || std::find(chain.begin(), chain.end(), next) != chain.end()) {
            throw damaged(page, u"Die Seiten der Tabellendefinition bilden eine Schleife");
        }
        const auto bytes = view.bytes.from(chain.empty() ? 0 : kPageHeaderBytes).bytes();
        joined.insert(joined.end(), bytes.begin(), bytes.end());
        chain.push_back(next);
        next = view.bytes.u32(kNextPageOffset);
    }
    return joined;
}

bool isKnown(ColumnType type) {
    return (type >= ColumnType::Boolean && type <= ColumnType::Memo) ||
           (type >= ColumnType::Guid && type <= ColumnType::Block);
}

Column readColumn(base::ByteView bytes) {
    Column column;
    std::copy(bytes.bytes().begin(), bytes.bytes().end(), column.descriptor.begin());
    column.type = static_cast<ColumnType>(bytes.u8(ColumnAt::kType));
    column.number = bytes.u16(ColumnAt::kNumber);
    column.variableIndex = bytes.u16(ColumnAt::kVariableIndex);
    column.displayPosition = bytes.u16(ColumnAt::kDisplayPosition);
    if (column.type == ColumnType::Numeric) {
        column.precision = bytes.u8(ColumnAt::kPrecision);
        column.scale = bytes.u8(ColumnAt::kScale);
    } else {
        column.textOrder = {bytes.u16(ColumnAt::kTextOrder), bytes.u8(ColumnAt::kTextOrderVersion)};
    }
    column.flags = bytes.u8(ColumnAt::kFlags);
    column.extendedFlags = bytes.u8(ColumnAt::kExtendedFlags);
    column.fixedOffset = bytes.u16(ColumnAt::kFixedOffset);
    column.lengthBytes = bytes.u16(ColumnAt::kLength);
    return column;
}

void checkColumn(const Column& column, const TableDefinition& definition) {
    const auto fail = [&](base::TextView found) {
        throw damaged(definition.page, u"Spalte '" + column.name + u"': " + base::Text(found));
    };
    if (!isKnown(column.type)) fail(u"Der Typ " + base::decimal(static_cast<int>(column.type)) + u" ist unbekannt");
    if (column.number >= definition.columnsEver) fail(u"Die Nummer " + base::decimal(column.number) + u" ist zu groß");
    if (column.type == ColumnType::Boolean) return;
    if (column.isFixed()) {
        const std::size_t needed = storedBytes(column.type);
        const bool isHalf = column.type == ColumnType::Text && column.lengthBytes % 2 != 0;
        if ((needed != 0 && column.lengthBytes != needed) || isHalf) fail(u"Die Länge passt nicht zum Typ");
        if (column.isLongValue()) fail(u"Ein langer Wert kann keine feste Länge haben");
        if (std::size_t{column.fixedOffset} + column.lengthBytes > kPageSize)
            fail(u"Die Spalte liegt hinter jeder Zeile");
    } else if (column.variableIndex >= definition.variableColumnsEver) {
        fail(u"Der Platz " + base::decimal(column.variableIndex) + u" ist zu groß");
    }
}

/// Each number, each place in the offset table and each name must belong to one column only.
void checkColumnsDiffer(const TableDefinition& definition) {
    std::set<std::uint16_t> numbers;
    std::set<std::uint16_t> places;
    std::set<base::Bytes> names;
    for (const Column& column : definition.columns) {
        const bool isVariable = !column.isFixed() && column.type != ColumnType::Boolean;
        if (!numbers.insert(column.number).second || (isVariable && !places.insert(column.variableIndex).second) ||
            !names.insert(sortKey(column.name)).second) {
            throw damaged(definition.page, u"Spalte '" + column.name + u"': Nummer, Platz oder Name kommt doppelt vor");
        }
    }
}

/// If two columns use the same bytes of a row, at least one of them would be misread.
void checkFixedColumnsApart(const TableDefinition& definition) {
    std::vector<const Column*> fixed;
    for (const Column& column : definition.columns) {
        if (column.isFixed() && column.type != ColumnType::Boolean) fixed.push_back(&column);
    }
    std::ranges::sort(fixed, {}, &Column::fixedOffset);
    for (std::size_t i = 1; i < fixed.size(); ++i) {
        if (fixed[i - 1]->fixedOffset + fixed[i - 1]->lengthBytes <= fixed[i]->fixedOffset) continue;
        throw damaged(definition.page, u"Die Spalten '" + fixed[i - 1]->name + u"' und '" + fixed[i]->name +
                                           u"' liegen in denselben Bytes der Zeile");
    }
}

void readColumns(Reader& reader, std::size_t count, TableDefinition& definition) {
    definition.columns.reserve(count);
    for (std::size_t i = 0; i < count; ++i)
        definition.columns.push_back(readColumn(reader.take(Column::kDescriptorBytes)));
    for (Column& column : definition.columns) {
        column.name = reader.name();
        checkColumn(column, definition);
    }
    checkColumnsDiffer(definition);
    checkFixedColumnsApart(definition);
}

void readIndex(Reader& reader, IndexDefinition& index, const TableDefinition& definition) {
    index.block = reader.takeArray<IndexDefinition::kBytes>();
    const base::ByteView bytes{index.block};
    for (std::size_t i = 0; i < kMaxIndexColumns; ++i) {
        const std::uint16_t number = bytes.u16(BlockAt::columnNumber(i));
        if (number == kNone) continue;
        if (definition.columnNumbered(number) == nullptr) {
            throw damaged(definition.page,
                          u"Ein Index nennt die Spalte " + base::decimal(number) + u", die es nicht gibt");
        }
        index.columns.push_back({number, (bytes.u8(BlockAt::columnOrder(i)) & 1U) != 0});
    }
    if (index.columns.empty()) throw damaged(definition.page, u"Ein Index hat keine Spalten");
    index.usageMap = RowPointer::unpack(bytes.u32(BlockAt::kUsageMap));
    index.rootPage = bytes.u32(BlockAt::kRootPage);
    index.flags = bytes.u8(BlockAt::kFlags);
}

LogicalIndex readLogicalIndex(Reader& reader, const TableDefinition& definition) {
    LogicalIndex index;
    index.record = reader.takeArray<LogicalIndex::kBytes>();
    const base::ByteView bytes{index.record};
    index.number = bytes.u32(LogicalAt::kNumber);
    index.dataBlock = bytes.u32(LogicalAt::kDataBlock);
    index.side = static_cast<LogicalIndex::Side>(bytes.u8(LogicalAt::kSide));
    index.partnerNumber = bytes.u32(LogicalAt::kPartnerNumber);
    index.partnerTable = bytes.u32(LogicalAt::kPartnerTable);
    index.updateRule = bytes.u8(LogicalAt::kUpdateRule);
    index.deleteRule = bytes.u8(LogicalAt::kDeleteRule);
    index.kind = static_cast<LogicalIndex::Kind>(bytes.u8(LogicalAt::kKind));
    if (index.dataBlock >= definition.indexes.size() || index.kind > LogicalIndex::Kind::ForeignKey ||
        index.side > LogicalIndex::Side::Referencing) {
        throw damaged(definition.page, u"Index Nummer " + base::decimal(index.number) + u" ist unmöglich beschrieben");
    }
    return index;
}

void readLogicalIndexes(Reader& reader, std::size_t count, TableDefinition& definition) {
    for (std::size_t i = 0; i < count; ++i)
        definition.logicalIndexes.push_back(readLogicalIndex(reader, definition));
    for (LogicalIndex& logical : definition.logicalIndexes) {
        logical.name = reader.name();
        IndexDefinition& index = definition.indexes[logical.dataBlock];
        const bool isPrimary = logical.kind == LogicalIndex::Kind::PrimaryKey;
        const bool isForeign = logical.kind == LogicalIndex::Kind::ForeignKey;
        if (isPrimary || (!isForeign && index.name.empty())) index.name = logical.name;
        index.isPrimary |= isPrimary;
    }
}

void readLongValueMaps(Reader& reader, TableDefinition& definition) {
    for (std::uint16_t number = reader.u16(); number != kNone; number = reader.u16()) {
        const base::ByteView bytes = reader.take(kLongValueMapsBytes - 2);
        definition.longValueMaps.push_back(
            {number, RowPointer::unpack(bytes.u32(0)), RowPointer::unpack(bytes.u32(4))});
    }
}

void readBlock(base::ByteView bytes, TableDefinition& definition) {
    definition.rowCount = bytes.u32(kRowCountOffset);
    definition.lastAutoNumber = bytes.u32(kAutoNumberOffset);
    const auto kept = bytes.slice(kKeptOffset, definition.kept.size()).bytes();
    std::copy(kept.begin(), kept.end(), definition.kept.begin());
    definition.kind = bytes.u8(kKindOffset);
    definition.columnsEver = bytes.u16(kColumnsEverOffset);
    definition.variableColumnsEver = bytes.u16(kVariableEverOffset);
    definition.ownedPages = RowPointer::unpack(bytes.u32(kOwnedOffset));
    definition.pagesWithSpace = RowPointer::unpack(bytes.u32(kSpaceOffset));
}

void readAll(base::ByteView joined, TableDefinition& definition) {
    const base::ByteView bytes = joined.slice(0, joined.u32(kLengthOffset));
    readBlock(bytes, definition);
    const std::size_t columnCount = bytes.u16(kColumnsOffset);
    const std::size_t indexCount = bytes.u32(kIndexesOffset);
    const std::size_t logicalCount = bytes.u32(kLogicalIndexesOffset);
    const bool isPossible = definition.columnsEver <= kMaxColumns && columnCount <= definition.columnsEver &&
                            columnCount > 0 && definition.variableColumnsEver <= definition.columnsEver &&
                            indexCount <= bytes.size() / IndexDefinition::kBytes &&
                            logicalCount <= bytes.size() / LogicalIndex::kBytes;
    if (!isPossible) throw damaged(definition.page, u"Die Zahl der Spalten oder Indizes ist unmöglich");
    Reader reader(bytes, definition.page);
    definition.indexes.resize(indexCount);
    for (IndexDefinition& index : definition.indexes) {
        index.statistics = reader.takeArray<kStatisticsBytes>();
        index.distinctKeys = base::ByteView{index.statistics}.u32(kDistinctOffset);
    }
    readColumns(reader, columnCount, definition);
    for (IndexDefinition& index : definition.indexes)
        readIndex(reader, index, definition);
    readLogicalIndexes(reader, logicalCount, definition);
    readLongValueMaps(reader, definition);
}

/// Appends to the joined bytes of a definition.
class Writer {
public:
    explicit Writer(base::Bytes& bytes) : bytes_(bytes) {}

    void u16(std::uint16_t value) {
        bytes_.push_back(static_cast<std::uint8_t>(value));
        bytes_.push_back(static_cast<std::uint8_t>(value >> 8U));
    }
    void u32(std::uint32_t value) {
        u16(static_cast<std::uint16_t>(value));
        u16(static_cast<std::uint16_t>(value >> 16U));
    }
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
    base::putU32(bytes, ColumnAt::kMark, kMark);
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
    base::putU32(bytes, BlockAt::kMark, kIndexMark);
    for (std::size_t i = 0; i < kMaxIndexColumns; ++i) {
        const bool isUsed = i < index.columns.size();
        base::putU16(bytes, BlockAt::columnNumber(i), isUsed ? index.columns[i].columnNumber : kNone);
        if (isUsed) bytes[BlockAt::columnOrder(i)] = index.columns[i].ascending ? 1 : 0;
    }
    base::putU32(bytes, BlockAt::kUsageMap, index.usageMap.packed());
    base::putU32(bytes, BlockAt::kRootPage, index.rootPage);
    bytes[BlockAt::kFlags] = index.flags;
    return bytes;
}

std::array<std::uint8_t, LogicalIndex::kBytes> encodeLogicalIndex(const LogicalIndex& index) {
    auto bytes = index.record;
    base::putU32(bytes, LogicalAt::kMark, kMark);
    base::putU32(bytes, LogicalAt::kNumber, index.number);
    base::putU32(bytes, LogicalAt::kDataBlock, index.dataBlock);
    bytes[LogicalAt::kSide] = static_cast<std::uint8_t>(index.side);
    base::putU32(bytes, LogicalAt::kPartnerNumber, index.partnerNumber);
    base::putU32(bytes, LogicalAt::kPartnerTable, index.partnerTable);
    bytes[LogicalAt::kUpdateRule] = index.updateRule;
    bytes[LogicalAt::kDeleteRule] = index.deleteRule;
    bytes[LogicalAt::kKind] = static_cast<std::uint8_t>(index.kind);
    return bytes;
}

void writeBlock(const TableDefinition& definition, std::span<std::uint8_t> bytes) {
    bytes[0] = static_cast<std::uint8_t>(PageKind::TableDefinition);
    bytes[1] = 1;
    base::putU32(bytes, kMarkOffset, kMark);
    base::putU32(bytes, kRowCountOffset, definition.rowCount);
    base::putU32(bytes, kAutoNumberOffset, definition.lastAutoNumber);
    std::copy(definition.kept.begin(), definition.kept.end(), bytes.begin() + kKeptOffset);
    bytes[kKindOffset] = definition.kind;
    base::putU16(bytes, kColumnsEverOffset, definition.columnsEver);
    base::putU16(bytes, kVariableEverOffset, definition.variableColumnsEver);
    base::putU16(bytes, kColumnsOffset, static_cast<std::uint16_t>(definition.columns.size()));
    base::putU32(bytes, kLogicalIndexesOffset, static_cast<std::uint32_t>(definition.logicalIndexes.size()));
    base::putU32(bytes, kIndexesOffset, static_cast<std::uint32_t>(definition.indexes.size()));
    base::putU32(bytes, kOwnedOffset, definition.ownedPages.packed());
    base::putU32(bytes, kSpaceOffset, definition.pagesWithSpace.packed());
}

}  // namespace

TableDefinition TableDefinition::read(PageSource& source, PageNumber page) {
    std::vector<PageNumber> chain;
    const base::Bytes joined = joinChain(source, page, chain);
    TableDefinition definition = decode(base::ByteView{joined}, page);
    definition.chain = std::move(chain);
    return definition;
}

TableDefinition TableDefinition::decode(base::ByteView joined, PageNumber page) {
    TableDefinition definition;
    definition.page = page;
    onPage(page, [&] { readAll(joined, definition); });
    return definition;
}

base::Bytes TableDefinition::encode() const {
    base::Bytes bytes(kStatisticsOffset, 0);
    writeBlock(*this, bytes);
    Writer writer(bytes);
    for (const IndexDefinition& index : indexes) {
        auto counts = index.statistics;
        base::putU32(counts, kDistinctOffset, index.distinctKeys);
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
        writer.u32(maps.free.packed());
    }
    writer.u16(kNone);
    base::putU32(bytes, kLengthOffset, static_cast<std::uint32_t>(bytes.size()));
    return bytes;
}

std::size_t TableDefinition::fixedAreaBytes() const {
    std::size_t end = 0;
    for (const Column& each : columns) {
        if (each.isFixed() && each.type != ColumnType::Boolean) {
            end = std::max<std::size_t>(end, std::size_t{each.fixedOffset} + each.lengthBytes);
        }
    }
    return end;
}

std::vector<const Column*> TableDefinition::columnsForDisplay() const {
    std::vector<const Column*> sorted;
    for (const Column& each : columns)
        sorted.push_back(&each);
    std::sort(sorted.begin(), sorted.end(), [](const Column* a, const Column* b) {
        return std::pair(a->displayPosition, a->number) < std::pair(b->displayPosition, b->number);
    });
    return sorted;
}

const Column* TableDefinition::column(base::TextView name) const {
    for (const Column& each : columns) {
        if (base::equalsIgnoringAsciiCase(each.name, name)) return &each;
    }
    for (const Column& each : columns) {
        if (textsAreEqual(each.name, name)) return &each;
    }
    return nullptr;
}

const Column* TableDefinition::columnNumbered(std::uint16_t number) const {
    for (const Column& each : columns) {
        if (each.number == number) return &each;
    }
    return nullptr;
}

std::size_t definitionPageCount(std::size_t joinedBytes) {
    if (joinedBytes <= kPageSize) return 1;
    constexpr std::size_t kRoom = kPageSize - kPageHeaderBytes;
    return 1 + (joinedBytes - kPageSize + kRoom - 1) / kRoom;
}

std::vector<base::Bytes> definitionPages(const base::Bytes& joined, std::span<const PageNumber> chain) {
    assert(chain.size() == definitionPageCount(joined.size()));
    std::vector<base::Bytes> pages;
    std::span<const std::uint8_t> rest{joined};
    for (std::size_t i = 0; i < chain.size(); ++i) {
        base::Bytes page(kPageSize, 0);
        const std::size_t start = i == 0 ? 0 : kPageHeaderBytes;
        const std::size_t count = std::min(kPageSize - start, rest.size());
        std::copy_n(rest.begin(), count, page.begin() + static_cast<std::ptrdiff_t>(start));
        rest = rest.subspan(count);
        const std::size_t free = kPageSize - start - count;
        page[0] = static_cast<std::uint8_t>(PageKind::TableDefinition);
        page[1] = 1;
        base::putU16(page, 2, static_cast<std::uint16_t>(free > kPageHeaderBytes ? free - kPageHeaderBytes : 0));
        base::putU32(page, kNextPageOffset, i + 1 < chain.size() ? chain[i + 1] : 0);
        pages.push_back(std::move(page));
    }
    return pages;
}

}  // namespace jet
