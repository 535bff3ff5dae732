#pragma once

#include <map>
#include <span>
#include <vector>

#include "base/Value.h"
#include "jet/fresh/FreshMaps.h"
#include "jet/fresh/FreshPages.h"
#include "jet/fresh/IndexTreeBuilder.h"
#include "jet/fresh/TableDesign.h"

namespace jet {

/// A table of a new file. It takes rows one after the other, then builds its indexes, fills in its maps and writes its
/// definition.
class FreshTable {
public:
    /// @param definitionPage  allocated before; a longer definition gets further pages
    FreshTable(FreshPages& pages, FreshMaps& maps, const TableDesign& design, PageNumber definitionPage);

    /// The same from a definition that was read from another file. All of it is kept but its places, which are new, and
    /// its counts, which are those of the rows to come. Pages of partner tables must already be those of the new file.
    /// @param name        of the table, for error messages
    /// @param definition  its `page` is the first page of the definition in the new file, allocated before
    FreshTable(FreshPages& pages, FreshMaps& maps, base::Text name, TableDefinition definition);

    PageNumber page() const { return definition_.page; }

    /// @param values  by column number
    /// @throws RuntimeError if the row is too long, or one of its keys is not certain (sortKeyIsCertain)
    void addRow(std::span<const base::Value> values);

    /// @throws RuntimeError if two rows have equal keys in a unique index
    void finish();

private:
    void clearCounts();
    void reservePlaces(FreshMaps& maps);
    base::Bytes longValue(const Column& column, const base::Bytes& value);
    void addToIndexes(std::span<const base::Value> values, RowPointer row);
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
};

}  // namespace jet
