#pragma once

#include <map>
#include <optional>
#include <span>
#include <vector>

#include "base/Value.h"
#include "jet/fresh/FreshMaps.h"
#include "jet/fresh/FreshPages.h"
#include "jet/fresh/IndexTreeBuilder.h"
#include "jet/table/RowCodec.h"
#include "jet/table/TableDefinition.h"

namespace jet {

/// A table of a new file. It takes rows one after the other, then builds its indexes, fills in its maps and writes its
/// definition.
class FreshTable {
public:
    /// All of a definition that was read from another file is kept (columns, indexes, relationships,
    /// auto number, bytes of unknown meaning) but its places, which are new, and its counts, which are those of the
    /// rows to come. Pages of partner tables must already be those of the new file (ObjectNumbers). The properties of a
    /// table are not here but in its row of MSysObjects.
    /// @param name        of the table, for error messages
    /// @param definition  its `page` is the first page of the definition in the new file, allocated before; a longer
    /// definition gets further pages
    FreshTable(FreshPages& pages, FreshMaps& maps, base::Text name, TableDefinition definition);

    PageNumber page() const { return definition_.page; }

    /// @param values  by column number
    /// @throws RuntimeError, without adding the row, if it is too long, one of its keys is not certain
    /// (sortKeyIsCertain), or it has a null where an index allows none
    void addRow(std::span<const base::Value> values);

    /// The same for a row that is already in the form of a file, to the bit. The auto number stays as it is.
    /// @param cells   by column number; of long values, what storeOutside() or inlineLongValue() returned
    /// @param values  by column number, for the keys of those indexes that are not takeEntries()
    /// @return its place, which is after those of all rows before it
    RowPointer addStoredRow(std::span<const Cell> cells, std::span<const base::Value> values = {});

    /// The bytes of the row for a long value that is stored outside of it.
    /// @param value  as stored: texts may be compressed
    base::Bytes storeOutside(const Column& column, std::span<const std::uint8_t> value);

    /// From now on no keys are made for this index, because buildIndex() will get its entries.
    /// @param index  position in TableDefinition::indexes
    void takeEntries(std::size_t index) { isGiven_[index] = true; }

    /// Builds such an index, when all rows are added.
    /// @return number of entries
    std::size_t buildIndex(std::size_t index, const EntryFeed& nextEntry);

    /// Builds all other indexes.
    /// @throws RuntimeError if two rows have equal keys in a unique index
    void finish();

private:
    /// A key of a row.
    struct Key {
        std::size_t index;
        base::Bytes bytes;
        bool hasNull;
    };

    void clearCounts();
    void requireLongValueMaps();
    void reservePlaces(FreshMaps& maps);
    std::vector<Cell> cellsOf(std::span<const base::Value> values);
    std::vector<Key> keysOf(std::span<const base::Value> values) const;
    std::optional<Key> keyOf(std::size_t index, std::span<const base::Value> values) const;
    RowPointer store(const base::Bytes& row, const std::vector<Key>& keys);
    void countKeys(IndexDefinition& index, const IndexEntries& entries) const;
    void finishMaps();
    void writeDefinition();

    FreshPages& pages_;
    FreshMaps& maps_;
    base::Text name_;
    TableDefinition definition_;
    FreshRows rows_;
    std::map<std::uint16_t, FreshRows> longValues_;  ///< by column number
    std::vector<IndexEntries> entries_;              ///< one element for each index
    std::vector<bool> isGiven_;                      ///< likewise: whether the caller builds it
};

}  // namespace jet
