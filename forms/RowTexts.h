#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "base/Text.h"

namespace forms {

/// Memory for the texts of a list's rows: large blocks, which are released together. So filling and clearing a list
/// needs few allocations. Texts that were replaced stay until then.
class TextMemory {
public:
    /// Memory for `after` units, with the first `before` units of the piece in it. The newest piece grows in place
    /// while its block has room; any other stays as it is and is copied to the end.
    char16_t* grow(char16_t* piece, std::size_t before, std::size_t after);
    void clear() { *this = TextMemory(); }

private:
    std::vector<std::unique_ptr<char16_t[]>> blocks_;
    char16_t* end_ = nullptr;    ///< of what is used of the last block
    std::size_t freeUnits_ = 0;  ///< after it
};

/// The texts of one list row in one piece of memory:
///
///     units 0, 1       number of cells, low and high half
///     then each cell   2 units: its length in units, low and high half; its units
class RowTexts {
public:
    /// Empty for a cell that was never set. Valid until a cell of this row is set.
    base::TextView cell(std::size_t index) const;
    /// @param memory  always the same for this row; must outlive it
    void setCell(TextMemory& memory, std::size_t index, base::TextView text);

private:
    char16_t* units_ = nullptr;
};

}  // namespace forms
