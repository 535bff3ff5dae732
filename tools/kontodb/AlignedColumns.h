#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "tools/kontodb/PrintBuffer.h"

namespace kontodb {

/// Columns that are aligned, for people. All texts are measured first and then put, row by row.
class AlignedColumns {
public:
    explicit AlignedColumns(std::size_t columns) : widths_(columns) {}

    void measure(std::size_t column, std::string_view utf8);
    void put(PrintBuffer& lines, std::size_t column, std::string_view utf8, bool toTheRight) const;
    /// A line of dashes under each column.
    void putRule(PrintBuffer& lines) const;

private:
    std::vector<std::size_t> widths_;  ///< in characters
};

/// Makes a text of one line that cannot control a terminal: tabs and line ends become blanks, other controls U+FFFD.
std::string withoutControls(std::string_view utf8);

}  // namespace kontodb
