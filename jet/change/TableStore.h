#pragma once

#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "jet/change/LongValueStore.h"
#include "jet/change/RowDraft.h"
#include "jet/change/RowStore.h"
#include "jet/index/IndexGuard.h"
#include "jet/index/IndexWriter.h"
#include "jet/page/PageStore.h"
#include "jet/space/PageAllocator.h"
#include "jet/table/DefinitionCounters.h"
#include "jet/table/Table.h"

namespace jet {

/// Stores the rows of a table: their bytes (RowStore), long values (LongValueStore), entries in all indexes, and the
/// counters in the definition. It checks the rules of indexes. TableWriter calls ColumnRules and Relationships for the
/// other rules.
///
/// A change has two steps: make...() reads and checks and may throw; add(), replace() or remove() writes.
class TableStore {
public:
    /// The change of a row's entry in one index.
    struct EntryChange {
        std::size_t index = 0;
        std::optional<IndexEntryKey> oldKey;  ///< nothing for a new row
        bool isOldCertain = true;             ///< false: the stored key may differ from oldKey
        std::optional<IndexEntryKey> newKey;  ///< nothing if the row is removed
    };
    using EntryChanges = std::vector<EntryChange>;

    struct Removal {
        RowPointer row;
        RowDraft draft;
        EntryChanges entries;
    };

    /// Store and allocator must outlive this object, which in turn must outlive everything that it returns.
    /// @throws RuntimeError: a system table, replication, damage
    TableStore(PageStore& store, PageAllocator& allocator, CatalogEntry entry);
    TableStore(const TableStore&) = delete;
    TableStore& operator=(const TableStore&) = delete;
    ~TableStore() = default;

    const Table& table() const { return table_; }
    const TableDefinition& definition() const { return table_.definition(); }
    DefinitionCounters counters() { return {store_, definition()}; }

    bool contains(RowPointer row) { return rows_.contains(row); }
    RowDraft makeRow() { return {store_, definition()}; }
    RowDraft draftOf(RowPointer row) { return {store_, definition(), table_.rowAt(row).view}; }

    /// @throws RuntimeError if a unique or required index refuses the row, or a key is not certain
    EntryChanges makeEntries(RowDraft& draft);
    Removal makeRemoval(RowPointer row);

    RowPointer add(RowDraft& draft, const EntryChanges& entries);
    void replace(RowPointer row, RowDraft& draft, const EntryChanges& entries);
    void remove(const Removal& removal);

    /// The rows with exactly this key.
    /// @throws RuntimeError if the keys of the index differ from those of this engine; damage
    std::vector<RowPointer> rowsWithKey(std::size_t index, std::span<const std::uint8_t> key);

    /// Checks that a new row could be added to all indexes.
    /// @throws RuntimeError if the keys of one differ from those of this engine; damage
    void requireWritableIndexes();
    void requireWritableIndex(std::size_t index);

    /// The last auto number used: that of the counter, or a greater one in a row.
    std::int32_t lastAutoNumber(const Column& column);

private:
    void requireWritable() const;
    void requireOwnKeysOnce(std::size_t index);
    std::optional<EntryChange> makeEntry(std::size_t index, RowDraft& draft);
    void addOldKey(EntryChange& change, const RowView& old);
    IndexWriter& writer(std::size_t index);
    void removeEntries(RowPointer row, const EntryChanges& entries);
    void addEntries(RowPointer row, const EntryChanges& entries);

    PageStore& store_;
    PageAllocator& allocator_;
    Table table_;
    RowStore rows_;
    LongValueStore longValues_;
    std::vector<std::unique_ptr<IndexWriter>> writers_;  ///< by position of the index; made when needed
    std::vector<bool> hasOwnKeys_;                       ///< by position of the index; compared with ours
};

}  // namespace jet
