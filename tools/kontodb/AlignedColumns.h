#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "tools/kontodb/PrintBuffer.h"

namespace kontodb {

/// Columns one below the other, for people. Every text is measured first, then all are put in the order of reading.
class AlignedColumns {
public:
    explicit AlignedColumns(std::size_t columns) : widths_(columns) {}

    void measure(std::size_t column, std::string_view utf8);
    void put(PrintBuffer& lines, std::size_t column, std::string_view utf8, bool toTheRight) const;
    /// Strokes as wide as the columns.
    void putRule(PrintBuffer& lines) const;

private:
    std::vector<std::size_t> widths_;  ///< in characters
};

/// A text in one line that does nothing to a terminal: the controls that part words and lines become blanks, all others
/// U+FFFD.
std::string withoutControls(std::string_view utf8);

}  // namespace kontodb
