#include "jet/change/TableStore.h"

#include <algorithm>
#include <array>
#include <utility>

#include "jet/Errors.h"
#include "jet/WriteErrors.h"
#include "jet/index/IndexKey.h"
#include "jet/tree/IndexCursor.h"

namespace jet {
namespace {

/// Only tables that take part in replication have these columns.
constexpr std::array<base::TextView, 3> kReplicationColumns = {u"s_GUID", u"s_Generation", u"s_Lineage"};

}  // namespace

TableStore::TableStore(PageStore& store, PageAllocator& allocator, CatalogEntry entry)
    : store_(store),
      allocator_(allocator),
      table_(store, std::move(entry)),
      rows_(store, allocator, table_.definition()),
      longValues_(store, allocator, table_.definition()),
      writers_(definition().indexes.size()),
      hasOwnKeys_(definition().indexes.size()) {
    requireWritable();
}

void TableStore::requireWritable() const {
    if (table_.entry().isSystem() || definition().isSystem())
        throw tableNotWritable(table_.name(), u"Sie gehört dem Datenbankmodul");
    for (const base::TextView name : kReplicationColumns) {
        if (definition().column(name) != nullptr)
            throw tableNotWritable(table_.name(), u"Replikation kennt das Modul nicht");
    }
}

IndexWriter& TableStore::writer(std::size_t index) {
    auto& writer = writers_.at(index);
    if (!writer) writer = std::make_unique<IndexWriter>(store_, allocator_, definition(), index);
    return *writer;
}

void TableStore::requireOwnKeysOnce(std::size_t index) {
    if (hasOwnKeys_.at(index)) return;
    requireOwnKeys(table_, definition().indexes[index]);
    hasOwnKeys_[index] = true;
}

void TableStore::requireWritableIndex(std::size_t index) {
    requireOwnKeysOnce(index);
    writer(index);
}

void TableStore::requireWritableIndexes() {
    for (std::size_t i = 0; i < definition().indexes.size(); ++i)
        requireWritableIndex(i);
}

void TableStore::addOldKey(EntryChange& change, const RowView& old) {
    const IndexDefinition& index = definition().indexes[change.index];
    change.oldKey.emplace();
    change.oldKey->hasEntry = keyOfRow(store_, index, old, change.oldKey->key);
    change.isOldCertain = keyOfRowIsCertain(store_, index, old);
}

/// Nothing if the entry does not change.
std::optional<TableStore::EntryChange> TableStore::makeEntry(std::size_t number, RowDraft& draft) {
    const IndexDefinition& index = definition().indexes[number];
    const bool concerned = std::ranges::any_of(
        index.columns, [&](const IndexColumn& part) { return draft.isChanged(definition().columnOf(part)); });
    if (!concerned) return std::nullopt;
    requireOwnKeysOnce(number);
    EntryChange change;
    change.index = number;
    change.newKey = keyToWrite(store_, index, draft.preview());
    if (draft.old()) {
        addOldKey(change, *draft.old());
        const bool isSame = change.isOldCertain && change.oldKey->hasEntry == change.newKey->hasEntry &&
                            change.oldKey->key == change.newKey->key;
        if (isSame) return std::nullopt;
    }
    if (change.newKey->hasNull) return change;
    if ((index.isUnique() || index.isPrimary) && writer(number).hasKey(change.newKey->key)) throw duplicateKey();
    return change;
}

TableStore::EntryChanges TableStore::makeEntries(RowDraft& draft) {
    EntryChanges changes;
    for (std::size_t i = 0; i < definition().indexes.size(); ++i) {
        if (auto change = makeEntry(i, draft)) changes.push_back(std::move(*change));
    }
    return changes;
}

TableStore::Removal TableStore::makeRemoval(RowPointer row) {
    Removal removal{row, draftOf(row), {}};
    for (std::size_t i = 0; i < definition().indexes.size(); ++i) {
        requireOwnKeysOnce(i);
        EntryChange change;
        change.index = i;
        addOldKey(change, *removal.draft.old());
        removal.entries.push_back(std::move(change));
    }
    return removal;
}

void TableStore::removeEntries(RowPointer row, const EntryChanges& entries) {
    for (const EntryChange& change : entries) {
        if (!change.oldKey || !change.oldKey->hasEntry) continue;
        if (change.isOldCertain)
            writer(change.index).remove(change.oldKey->key, row);
        else
            writer(change.index).removeEntryOf(row);
    }
}

void TableStore::addEntries(RowPointer row, const EntryChanges& entries) {
    for (const EntryChange& change : entries) {
        if (!change.newKey || !change.newKey->hasEntry) continue;
        writer(change.index).insert(change.newKey->key, row, change.newKey->hasNull);
    }
}

RowPointer TableStore::add(RowDraft& draft, const EntryChanges& entries) {
    const RowPointer row = rows_.add(draft.finish(longValues_));
    addEntries(row, entries);
    counters().setRowCount(counters().rowCount() + 1);
    return row;
}

void TableStore::replace(RowPointer row, RowDraft& draft, const EntryChanges& entries) {
    rows_.replace(row, draft.finish(longValues_));
    removeEntries(row, entries);
    addEntries(row, entries);
}

void TableStore::remove(const Removal& removal) {
    removeEntries(removal.row, removal.entries);
    removal.draft.removeOldLongValues(longValues_);
    rows_.remove(removal.row);
    // The count may have been wrong before, so it may be 0 already.
    const std::uint32_t count = counters().rowCount();
    if (count > 0) counters().setRowCount(count - 1);
}

std::vector<RowPointer> TableStore::rowsWithKey(std::size_t index, std::span<const std::uint8_t> key) {
    requireOwnKeysOnce(index);
    std::vector<RowPointer> rows;
    IndexCursor cursor(store_, definition().page, definition().indexes[index].rootPage);
    // A key can be a prefix of others, for example that of an empty byte value, so entries with longer keys may come
    // between.
    for (cursor.seek(key); cursor.isAtEntry() && cursor.keyStartsWith(key); cursor.next())
        if (cursor.key().size() == key.size()) rows.push_back(cursor.row());
    return rows;
}

std::int32_t TableStore::lastAutoNumber(const Column& column) {
    const auto counter = static_cast<std::int32_t>(counters().lastAutoNumber());
    for (const IndexDefinition& index : definition().indexes) {
        if (index.columns.empty() || index.columns[0].columnNumber != column.number) continue;
        IndexCursor cursor(store_, definition().page, index.rootPage);
        const bool hasRows = index.columns[0].ascending ? cursor.last() : cursor.first();
        if (!hasRows) return counter;
        const base::Value greatest = table_.value(table_.rowAt(cursor.row()).view, column);
        const auto* number = std::get_if<std::int32_t>(&greatest);
        return number == nullptr ? counter : std::max(counter, *number);
    }
    return counter;
}

}  // namespace jet
