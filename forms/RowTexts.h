#pragma once

#include <cstddef>
#include <memory>

#include "base/Text.h"

namespace forms {

/// The texts of one list row in one block of memory, so that a row needs one allocation and no spare space:
///
///     units 0, 1       number of cells n, low and high half
///     units 2 to 2n+1  end of each cell, in units from the end of this table, low and high half
///     then             the cells' units, one cell after the other
///
/// Setting a cell makes a new block.
class RowTexts {
public:
    /// Empty for a cell that was never set. Valid until a cell of this row is set.
    base::TextView cell(std::size_t index) const;
    void setCell(std::size_t index, base::TextView text);

private:
    std::size_t cellCount() const;
    std::size_t endOf(std::size_t index) const;

    std::unique_ptr<char16_t[]> block_;
};

}  // namespace forms
