#pragma once

#include <map>
#include <span>

#include "base/Value.h"
#include "jet/space/RowPages.h"
#include "jet/table/LongValue.h"
#include "jet/table/TableDefinition.h"

namespace jet {

/// The long values of a table: puts them on the pages of their columns and takes them off. What a row holds of a value
/// belongs to this row alone. See docs/file-format.md, "Long values".
class LongValueStore {
public:
    /// All must outlive the store.
    LongValueStore(PageStore& store, PageAllocator& allocator, const TableDefinition& table);

    /// Puts the value on pages, whatever its length.
    /// @return the column's bytes in the row
    /// @throws RuntimeError if the file is full, or the value longer than the format allows
    base::Bytes add(const Column& column, std::span<const std::uint8_t> value) {
        return placeLongValue(pagesOf(column), value);
    }

    /// Removes what lies outside of the row.
    /// @param stored  the column's bytes in the row
    /// @param row     for error messages
    /// @throws RuntimeError (damage) if the value cannot be read
    void remove(const Column& column, std::span<const std::uint8_t> stored, RowPointer row);

private:
    RowPages& pagesOf(const Column& column);
    void removeChain(RowPages& pages, RowPointer part);

    PageStore& store_;
    PageAllocator& allocator_;
    const TableDefinition& table_;
    std::map<std::uint16_t, RowPages> pages_;  ///< by column number
};

}  // namespace jet
