#include "jet/check/DefinitionCheck.h"

#include <algorithm>
#include <set>

namespace jet {
namespace {

constexpr std::uint8_t kOrdinaryRule = 4;
constexpr PageNumber kFirstSystemTable = 2;
constexpr PageNumber kLastSystemTable = 5;

base::Bytes joined(PageSource& source, const std::vector<PageNumber>& chain) {
    base::Bytes bytes;
    for (const PageNumber page : chain) {
        const PageView view = source.page(page);
        const auto part = view.bytes.from(bytes.empty() ? 0 : DefinitionPageAt::kContent).bytes();
        bytes.insert(bytes.end(), part.begin(), part.end());
    }
    return bytes;
}

/// The pages' own fields must be as a writer of this definition would fill them.
void checkPages(const CheckContext& context, const TableDefinition& definition, const base::Bytes& stored,
                std::size_t length, const Place& place) {
    const std::size_t needed = definitionPageCount(length);
    if (needed != definition.chain.size()) {
        context.findings.fault(place.onPage(definition.page),
                               u"Die Tabellendefinition hat " + countText(definition.chain.size()) +
                                   u" Seiten, ihre Länge braucht " + countText(needed) + u".");
        return;
    }
    const auto pages = definitionPages(
        base::Bytes(stored.begin(), stored.begin() + static_cast<std::ptrdiff_t>(length)), definition.chain);
    for (std::size_t i = 0; i < pages.size(); ++i) {
        const PageNumber number = definition.chain[i];
        const std::uint16_t found = context.source.page(number).bytes.u16(kFreeBytesOffset);
        const std::uint16_t expected = base::ByteView{pages[i]}.u16(kFreeBytesOffset);
        if (found == expected) continue;
        context.findings.fault(place.onPage(number), countText(found) + u" freie Bytes der Definitionsseite statt " +
                                                         countText(expected) + u".");
    }
}

/// The definition is encoded again and must give the stored bytes: marks, lengths, order.
void checkBytes(const CheckContext& context, const TableDefinition& definition, const Place& place) {
    const base::Bytes stored = joined(context.source, definition.chain);
    const std::size_t length = base::ByteView{stored}.u32(DefinitionAt::kLength);
    const base::Bytes encoded = definition.encode();
    if (encoded.size() != length) {
        context.findings.fault(place.onPage(definition.page), u"Die Länge der Tabellendefinition ist " +
                                                                  countText(length) + u", ihre Teile haben " +
                                                                  countText(encoded.size()) + u" Bytes.");
    } else {
        const auto from = static_cast<std::ptrdiff_t>(DefinitionPageAt::kContent);
        const auto difference = std::mismatch(encoded.begin() + from, encoded.end(), stored.begin() + from);
        if (difference.first != encoded.end()) {
            context.findings.fault(place.onPage(definition.page),
                                   u"Byte " + countText(static_cast<std::size_t>(difference.first - encoded.begin())) +
                                       u" der Tabellendefinition ist " + countText(*difference.second) + u" statt " +
                                       countText(*difference.first) + u".");
        }
    }
    checkPages(context, definition, stored, length, place);
}

void checkLogicalIndexes(const CheckContext& context, const TableDefinition& definition, const Place& place) {
    std::set<std::uint32_t> numbers;
    std::set<std::uint32_t> backed;
    std::size_t primaryKeys = 0;
    for (const LogicalIndex& index : definition.logicalIndexes) {
        const Place at = place.withIndex(index.name).onPage(definition.page);
        backed.insert(index.dataBlock);
        if (!numbers.insert(index.number).second)
            context.findings.fault(at, u"Die Nummer " + base::decimal(index.number) + u" kommt doppelt vor.");
        if (index.kind == LogicalIndex::Kind::PrimaryKey && ++primaryKeys > 1)
            context.findings.fault(at, u"Die Tabelle hat mehr als einen Primärschlüssel.");
        const bool isOrdinary = index.kind != LogicalIndex::Kind::ForeignKey;
        // Some writers store 0 instead of 4 here, and all readers accept it.
        const auto isRule = [](std::uint8_t rule) { return rule == kOrdinaryRule || rule == 0; };
        if (isOrdinary && (index.side != LogicalIndex::Side::None || index.partnerTable != 0 ||
                           !isRule(index.updateRule) || !isRule(index.deleteRule))) {
            context.findings.fault(at, u"Ein gewöhnlicher Index trägt die Angaben einer Beziehung.");
        }
        if (!isOrdinary && index.side == LogicalIndex::Side::None)
            context.findings.fault(at, u"Der Index einer Beziehung nennt seine Seite nicht.");
    }
    for (std::size_t i = 0; i < definition.indexes.size(); ++i) {
        if (!backed.contains(static_cast<std::uint32_t>(i)))
            context.findings.fault(place.onPage(definition.page),
                                   u"Der Indexbaum " + countText(i) + u" hat keinen Namen.");
    }
}

void checkColumns(const CheckContext& context, const TableDefinition& definition, const Place& place) {
    for (const Column& column : definition.columns) {
        const Place at = place.withColumn(column.name).onPage(definition.page);
        if (column.isAutoNumber() && column.type != ColumnType::Long)
            context.findings.fault(at, u"Die Spalte zählt von selbst und ist nicht vom Typ Long.");
        if (!column.isLongValue()) continue;
        const bool hasMaps = std::any_of(definition.longValueMaps.begin(), definition.longValueMaps.end(),
                                         [&](const LongValueMaps& maps) { return maps.columnNumber == column.number; });
        if (!hasMaps) context.findings.fault(at, u"Die Karten der Spalte für lange Werte fehlen.");
    }
}

/// Places are given in sequence and never again. So only deleted columns leave gaps.
void checkPlaces(const CheckContext& context, const TableDefinition& definition, const Place& place) {
    if (definition.columns.size() != definition.columnsEver) return;
    std::size_t fixedBytes = 0;
    std::size_t variableColumns = 0;
    for (const Column& column : definition.columns) {
        if (column.type == ColumnType::Boolean) continue;
        if (column.isFixed())
            fixedBytes += column.lengthBytes;
        else
            ++variableColumns;
    }
    if (fixedBytes == definition.fixedAreaBytes() && variableColumns == definition.variableColumnsEver) return;
    context.findings.fault(place.onPage(definition.page),
                           u"Die Spalten füllen ihre Zeile nicht, obwohl keine gelöscht ist.");
}

}  // namespace

void checkDefinition(const CheckContext& context, const TableDefinition& definition, const Place& place) {
    const bool isSystem = definition.page >= kFirstSystemTable && definition.page <= kLastSystemTable;
    const std::uint8_t kind = isSystem ? std::uint8_t{'S'} : std::uint8_t{'N'};
    if (definition.kind != kind) {
        context.findings.fault(place.onPage(definition.page), u"Die Art der Tabelle ist " + countText(definition.kind) +
                                                                  u" statt " + countText(kind) + u".");
    }
    for (const IndexDefinition& index : definition.indexes) {
        if ((index.flags & IndexDefinition::kAlways) == 0) {
            context.findings.fault(place.withIndex(index.name).onPage(definition.page),
                                   u"Die Merkmale des Indexes sind " + countText(index.flags) + u" ohne 128.");
        }
    }
    context.findings.guard(place.onPage(definition.page), [&] { checkBytes(context, definition, place); });
    checkLogicalIndexes(context, definition, place);
    checkColumns(context, definition, place);
    checkPlaces(context, definition, place);
}

}  // namespace jet
