#include "jet/change/Relationships.h"

#include <algorithm>
#include <set>
#include <utility>

#include "jet/Errors.h"
#include "jet/WriteErrors.h"
#include "jet/index/IndexKey.h"
#include "jet/value/SortKey.h"

namespace jet {
namespace {

constexpr std::uint8_t kCascade = 0x01;
constexpr std::uint8_t kSetNull = 0x02;

bool anyColumnChanged(const TableDefinition& table, const IndexDefinition& index, const RowDraft& draft) {
    return std::ranges::any_of(index.columns,
                               [&](const IndexColumn& part) { return draft.isChanged(table.columnOf(part)); });
}

bool isWhole(ColumnType type) {
    return type == ColumnType::Byte || type == ColumnType::Integer || type == ColumnType::Long;
}

/// Whether a value of one column can be looked up in an index of the other one.
bool areOfOneKind(const Column& a, const Column& b) {
    return a.type == b.type || (isWhole(a.type) && isWhole(b.type));
}

bool cascadesDelete(const LogicalIndex& index) {
    return (index.deleteRule & kCascade) != 0;
}

}  // namespace

Relationships::Link Relationships::linkOf(TableStore& table, const LogicalIndex& index) {
    TableStore& partner = tables_.at(index.partnerTable);
    const TableDefinition& there = partner.definition();
    const auto found = std::ranges::find_if(there.logicalIndexes, [&](const LogicalIndex& each) {
        return each.kind == LogicalIndex::Kind::ForeignKey && each.number == index.partnerNumber;
    });
    if (found == there.logicalIndexes.end() || found->partnerTable != table.definition().page)
        throw damaged(there.page, u"Das Gegenstück der Beziehung '" + index.name + u"' fehlt");
    Link link{table.definition().indexes.at(index.dataBlock), partner, found->dataBlock};
    const auto& own = link.ownIndex.columns;
    const auto& others = there.indexes.at(link.partnerIndex).columns;
    if (own.size() != others.size())
        throw damaged(there.page, u"Die Beziehung '" + index.name + u"' hat auf beiden Seiten andere Spalten");
    for (std::size_t i = 0; i < own.size(); ++i) {
        if (areOfOneKind(table.definition().columnOf(own[i]), there.columnOf(others[i]))) continue;
        throw tableNotWritable(table.table().name(), u"Die Beziehung '" + index.name +
                                                         u"' verbindet Spalten verschiedener Art, und das kann das "
                                                         u"Modul nicht");
    }
    return link;
}

/// The key in the partner's index of rows with the same values. Nothing if there cannot be such a row: a value is null,
/// or out of the range of the partner's column.
std::optional<base::Bytes> Relationships::partnerKey(const TableStore& table, const Link& link, const RowValues& row) {
    const TableDefinition& there = link.partner.definition();
    const IndexDefinition& index = there.indexes[link.partnerIndex];
    base::Bytes key;
    for (std::size_t i = 0; i < index.columns.size(); ++i) {
        const base::Value value = row.valueOf(table.definition().columnOf(link.ownIndex.columns[i]));
        if (base::isNull(value)) return std::nullopt;
        const Column& column = there.columnOf(index.columns[i]);
        const auto* text = std::get_if<base::Text>(&value);
        if (text != nullptr && !sortKeyIsCertain(*text, column.textOrder)) throw uncertainKey(index.name);
        const auto part = keyPartFor(column, value, index.columns[i].ascending);
        if (!part) return std::nullopt;
        key.insert(key.end(), part->begin(), part->end());
    }
    return key;
}

std::vector<RowPointer> Relationships::partnerRows(const TableStore& table, const Link& link, const RowValues& row) {
    const auto key = partnerKey(table, link, row);
    if (!key) return {};
    return link.partner.rowsWithKey(link.partnerIndex, *key);
}

void Relationships::requireUsable(TableStore& table) {
    for (const LogicalIndex& index : table.definition().logicalIndexes) {
        if (index.kind != LogicalIndex::Kind::ForeignKey || index.side != LogicalIndex::Side::Referencing) continue;
        const Link link = linkOf(table, index);
        link.partner.requireWritableIndex(link.partnerIndex);
    }
}

void Relationships::check(TableStore& table, RowDraft& draft) {
    for (const LogicalIndex& index : table.definition().logicalIndexes) {
        if (index.kind != LogicalIndex::Kind::ForeignKey) continue;
        if (index.side == LogicalIndex::Side::Referencing) checkReference(table, index, draft);
        if (index.side == LogicalIndex::Side::Referenced && draft.old()) checkReferrers(table, index, draft);
    }
}

void Relationships::checkReference(TableStore& table, const LogicalIndex& index, RowDraft& draft) {
    const Link link = linkOf(table, index);
    if (!anyColumnChanged(table.definition(), link.ownIndex, draft)) return;
    const bool hasNull = std::ranges::any_of(link.ownIndex.columns, [&](const IndexColumn& part) {
        return base::isNull(draft.valueOf(table.definition().columnOf(part)));
    });
    if (hasNull) return;
    const auto key = partnerKey(table, link, draft);
    if (key && !link.partner.rowsWithKey(link.partnerIndex, *key).empty()) return;
    // A row may refer to itself.
    base::Bytes own;
    const bool isItself =
        key && &link.partner == &table &&
        keyOfRow(tables_.store(), table.definition().indexes[link.partnerIndex], draft.preview(), own) && own == *key;
    if (!isItself) throw relatedRowMissing(link.partner.table().name());
}

void Relationships::checkReferrers(TableStore& table, const LogicalIndex& index, RowDraft& draft) {
    const Link link = linkOf(table, index);
    if (!anyColumnChanged(table.definition(), link.ownIndex, draft)) return;
    base::Bytes before;
    base::Bytes after;
    keyOfRow(tables_.store(), link.ownIndex, *draft.old(), before);
    keyOfRow(tables_.store(), link.ownIndex, draft.preview(), after);
    if (before == after) return;
    if (partnerRows(table, link, StoredValues(tables_.store(), *draft.old())).empty()) return;
    const base::Text& referring = link.partner.table().name();
    if (index.updateRule == kCascade) {
        throw tableNotWritable(table.table().name(), u"Die Änderung müsste an die Tabelle '" + referring +
                                                         u"' weitergegeben werden, und das kann das Modul nicht");
    }
    throw relatedRowsExist(referring);
}

std::vector<Relationships::TableRemoval> Relationships::removalsOf(TableStore& table, RowPointer row) {
    std::vector<TableRemoval> removals;
    std::vector<Referrer> mustGo;
    std::set<std::pair<PageNumber, RowPointer>> going{{table.definition().page, row}};
    removals.push_back({&table, table.makeRemoval(row)});
    // The list grows during the loop: other rows may refer to the rows that are added to it.
    for (std::size_t i = 0; i < removals.size(); ++i) {
        TableStore& from = *removals[i].table;
        for (const LogicalIndex& index : from.definition().logicalIndexes) {
            if (index.kind != LogicalIndex::Kind::ForeignKey || index.side != LogicalIndex::Side::Referenced) continue;
            const Link link = linkOf(from, index);
            const StoredValues values(tables_.store(), *removals[i].removal.draft.old());
            for (const RowPointer referrer : partnerRows(from, link, values)) {
                if (!cascadesDelete(index)) {
                    if ((index.deleteRule & kSetNull) != 0) {
                        throw tableNotWritable(from.table().name(),
                                               u"Die Tabelle '" + link.partner.table().name() +
                                                   u"' müsste Nullwerte bekommen, und das kann das Modul nicht");
                    }
                    mustGo.push_back({&link.partner, referrer});
                } else if (going.insert({link.partner.definition().page, referrer}).second) {
                    removals.push_back({&link.partner, link.partner.makeRemoval(referrer)});
                }
            }
        }
    }
    for (const Referrer& referrer : mustGo) {
        if (!going.contains({referrer.table->definition().page, referrer.row}))
            throw relatedRowsExist(referrer.table->table().name());
    }
    return removals;
}

}  // namespace jet
