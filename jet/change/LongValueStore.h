#pragma once

#include <map>
#include <span>

#include "base/Value.h"
#include "jet/space/RowPages.h"
#include "jet/table/LongValue.h"
#include "jet/table/TableDefinition.h"

namespace jet {

/// Adds the long values of a table to the pages of their columns, and removes them. Each value belongs to one row only.
/// See docs/file-format.md, "Long values".
class LongValueStore {
public:
    /// All arguments must outlive this object.
    LongValueStore(PageStore& store, PageAllocator& allocator, const TableDefinition& table);

    /// Writes the value to pages, even if it is short.
    /// @return the bytes that the row has for the column
    /// @throws RuntimeError if the file is full, or the value longer than the format allows
    base::Bytes add(const Column& column, std::span<const std::uint8_t> value) {
        return placeLongValue(pagesOf(column), value);
    }

    /// Removes the part of the value that is not in the row itself.
    /// @param stored  the bytes that the row has for the column
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
