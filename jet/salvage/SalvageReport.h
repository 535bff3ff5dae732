#pragma once

#include <cstddef>
#include <vector>

#include "base/Text.h"
#include "jet/RowPointer.h"

namespace jet {

/// What was lost of a damaged file, in German sentences, in lists of limited length.
class SalvageReport {
public:
    /// Lines that are kept for each table. The rest is only counted.
    static constexpr std::size_t kMaxLines = 200;

    struct Table {
        base::Text name;
        std::size_t wholeRows = 0;
        std::size_t rowsWithLosses = 0;  ///< some of their values are lost
        std::size_t lostRows = 0;
        std::vector<base::Text> lines;
        std::size_t furtherLines = 0;

        void lose(base::Text line);
        bool hasLosses() const { return rowsWithLosses > 0 || lostRows > 0 || !lines.empty(); }
    };

    std::vector<Table> tables;
    Table file;                       ///< what belongs to no table; its name is empty
    std::vector<base::Text> remarks;  ///< what the reader should know and what is no loss

    bool hasLosses() const;
};

/// "Seite 5, Zeile 3"
base::Text placeText(RowPointer row);

base::Text countText(std::size_t count, base::TextView one, base::TextView many);

}  // namespace jet
