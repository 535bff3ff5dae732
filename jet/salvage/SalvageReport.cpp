#include "jet/salvage/SalvageReport.h"

#include <algorithm>
#include <utility>

namespace jet {

void SalvageReport::Table::lose(base::Text line) {
    if (lines.size() < kMaxLines)
        lines.push_back(std::move(line));
    else
        ++furtherLines;
}

bool SalvageReport::hasLosses() const {
    return file.hasLosses() || std::ranges::any_of(tables, &Table::hasLosses);
}

base::Text placeText(RowPointer row) {
    return u"Seite " + base::decimal(row.page) + u", Zeile " + base::decimal(row.slot);
}

base::Text countText(std::size_t count, base::TextView one, base::TextView many) {
    return base::decimal(count) + u" " + base::Text(count == 1 ? one : many);
}

}  // namespace jet
