#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "base/Text.h"

namespace forms {

/// Memory for the texts of a list's rows, in large blocks. clear() empties all blocks but keeps them, because a cleared
/// list is usually filled again with about as many rows, and new memory from the system is slow. Replaced texts keep
/// their memory until then.
class TextMemory {
public:
    /// Memory for `after` units, with the first `before` units of the piece in it. The newest piece grows in place
    /// while its block has room; any other stays as it is and is copied to the end.
    char16_t* grow(char16_t* piece, std::size_t before, std::size_t after);
    void clear();

private:
    struct Block {
        std::unique_ptr<char16_t[]> memory;
        std::size_t units = 0;
    };

    void useNextBlock(std::size_t fewestUnits);

    std::vector<Block> blocks_;
    std::size_t usedBlocks_ = 0;
    char16_t* end_ = nullptr;    ///< end of the used part of the last used block
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
