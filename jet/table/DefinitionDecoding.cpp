#include <algorithm>
#include <set>

#include "base/ByteView.h"
#include "jet/Errors.h"
#include "jet/table/TableDefinition.h"
#include "jet/value/SortKey.h"

namespace jet {
namespace {

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
    std::size_t place_ = DefinitionAt::kStatistics;
};

base::Bytes joinChain(PageSource& source, PageNumber page, std::vector<PageNumber>& chain) {
    base::Bytes joined;
    for (PageNumber next = page; next != 0;) {
        const PageView view = pageOfKind(source, next, PageKind::TableDefinition);
        if (chain.size() == kMaxDefinitionPages || std::find(chain.begin(), chain.end(), next) != chain.end()) {
            throw damaged(page, u"Die Seiten der Tabellendefinition bilden eine Schleife");
        }
        const auto bytes = view.bytes.from(chain.empty() ? 0 : DefinitionPageAt::kContent).bytes();
        joined.insert(joined.end(), bytes.begin(), bytes.end());
        chain.push_back(next);
        next = view.bytes.u32(DefinitionPageAt::kNextPage);
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
        const std::uint16_t number = bytes.u16(IndexBlockAt::columnNumber(i));
        if (number == kNoColumn) continue;
        if (definition.columnNumbered(number) == nullptr) {
            throw damaged(definition.page,
                          u"Ein Index nennt die Spalte " + base::decimal(number) + u", die es nicht gibt");
        }
        index.columns.push_back({number, (bytes.u8(IndexBlockAt::columnOrder(i)) & 1U) != 0});
    }
    if (index.columns.empty()) throw damaged(definition.page, u"Ein Index hat keine Spalten");
    index.usageMap = RowPointer::unpack(bytes.u32(IndexBlockAt::kUsageMap));
    index.rootPage = bytes.u32(IndexBlockAt::kRootPage);
    index.flags = bytes.u8(IndexBlockAt::kFlags);
}

LogicalIndex readLogicalIndex(Reader& reader, const TableDefinition& definition) {
    LogicalIndex index;
    index.record = reader.takeArray<LogicalIndex::kBytes>();
    const base::ByteView bytes{index.record};
    index.number = bytes.u32(LogicalIndexAt::kNumber);
    index.dataBlock = bytes.u32(LogicalIndexAt::kDataBlock);
    index.side = static_cast<LogicalIndex::Side>(bytes.u8(LogicalIndexAt::kSide));
    index.partnerNumber = bytes.u32(LogicalIndexAt::kPartnerNumber);
    index.partnerTable = bytes.u32(LogicalIndexAt::kPartnerTable);
    index.updateRule = bytes.u8(LogicalIndexAt::kUpdateRule);
    index.deleteRule = bytes.u8(LogicalIndexAt::kDeleteRule);
    index.kind = static_cast<LogicalIndex::Kind>(bytes.u8(LogicalIndexAt::kKind));
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
    for (std::uint16_t number = reader.u16(); number != kNoColumn; number = reader.u16()) {
        const base::ByteView bytes = reader.take(kLongValueMapsBytes - 2);
        definition.longValueMaps.push_back(
            {number, RowPointer::unpack(bytes.u32(0)), RowPointer::unpack(bytes.u32(4))});
    }
}

void readBlock(base::ByteView bytes, TableDefinition& definition) {
    definition.rowCount = bytes.u32(DefinitionAt::kRowCount);
    definition.lastAutoNumber = bytes.u32(DefinitionAt::kAutoNumber);
    const auto kept = bytes.slice(DefinitionAt::kKept, definition.kept.size()).bytes();
    std::copy(kept.begin(), kept.end(), definition.kept.begin());
    definition.kind = bytes.u8(DefinitionAt::kKind);
    definition.columnsEver = bytes.u16(DefinitionAt::kColumnsEver);
    definition.variableColumnsEver = bytes.u16(DefinitionAt::kVariableEver);
    definition.ownedPages = RowPointer::unpack(bytes.u32(DefinitionAt::kOwnedPages));
    definition.pagesWithSpace = RowPointer::unpack(bytes.u32(DefinitionAt::kPagesWithSpace));
}

void readAll(base::ByteView joined, TableDefinition& definition) {
    const base::ByteView bytes = joined.slice(0, joined.u32(DefinitionAt::kLength));
    readBlock(bytes, definition);
    const std::size_t columnCount = bytes.u16(DefinitionAt::kColumns);
    const std::size_t indexCount = bytes.u32(DefinitionAt::kIndexes);
    const std::size_t logicalCount = bytes.u32(DefinitionAt::kLogicalIndexes);
    const bool isPossible = definition.columnsEver <= kMaxColumns && columnCount <= definition.columnsEver &&
                            columnCount > 0 && definition.variableColumnsEver <= definition.columnsEver &&
                            indexCount <= bytes.size() / IndexDefinition::kBytes &&
                            logicalCount <= bytes.size() / LogicalIndex::kBytes;
    if (!isPossible) throw damaged(definition.page, u"Die Zahl der Spalten oder Indizes ist unmöglich");
    Reader reader(bytes, definition.page);
    definition.indexes.resize(indexCount);
    for (IndexDefinition& index : definition.indexes) {
        index.statistics = reader.takeArray<kStatisticsBytes>();
        index.distinctKeys = base::ByteView{index.statistics}.u32(StatisticsAt::kDistinctKeys);
    }
    readColumns(reader, columnCount, definition);
    for (IndexDefinition& index : definition.indexes)
        readIndex(reader, index, definition);
    readLogicalIndexes(reader, logicalCount, definition);
    readLongValueMaps(reader, definition);
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

}  // namespace jet
