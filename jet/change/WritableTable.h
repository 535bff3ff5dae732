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

/// A table whose rows can be written with everything that lies in the file for them: bytes, long values, the entries of
/// all indexes, the counts of the definition. It keeps the rules of indexes; those of columns and relationships are
/// others' business.
///
/// A change has two halves. The first one, make..., reads and checks, and can refuse; the second one writes.
class WritableTable {
public:
    /// What happens to a row's entry in one index.
    struct EntryChange {
        std::size_t index = 0;
        std::optional<IndexEntryKey> oldKey;  ///< nothing for a new row
        bool isOldCertain = true;             ///< false: the old key cannot be made again
        std::optional<IndexEntryKey> newKey;  ///< nothing for a row to be removed
    };
    using EntryChanges = std::vector<EntryChange>;

    struct Removal {
        RowPointer row;
        RowDraft draft;
        EntryChanges entries;
    };

    /// Nothing here may move: store and allocator must outlive it, and what it gives away refers to it.
    /// @throws RuntimeError: a system table, replication, damage
    WritableTable(PageStore& store, PageAllocator& allocator, CatalogEntry entry);
    WritableTable(const WritableTable&) = delete;
    WritableTable& operator=(const WritableTable&) = delete;
    ~WritableTable() = default;

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

    /// Rows with exactly this key.
    /// @throws RuntimeError if the index has other keys than ours; damage
    std::vector<RowPointer> rowsWithKey(std::size_t index, std::span<const std::uint8_t> key);

    /// Looks at all indexes, as a new row will.
    /// @throws RuntimeError if one has other keys than ours; damage
    void requireWritableIndexes();
    void requireWritableIndex(std::size_t index);

    /// The last number given: the counter's, or a greater one that stands in a row.
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
    std::vector<std::unique_ptr<IndexWriter>> writers_;  ///< by index; made when needed
    std::vector<bool> hasOwnKeys_;                       ///< by index: known to
};

}  // namespace jet
