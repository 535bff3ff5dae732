#include "jet/table/TableDefinition.h"

#include <algorithm>
#include <utility>

#include "jet/value/SortKey.h"

namespace jet {

std::size_t TableDefinition::fixedAreaBytes() const {
    std::size_t end = 0;
    for (const Column& each : columns) {
        if (each.isFixed() && each.type != ColumnType::Boolean) {
            end = std::max<std::size_t>(end, std::size_t{each.fixedOffset} + each.lengthBytes);
        }
    }
    return end;
}

std::vector<const Column*> TableDefinition::columnsForDisplay() const {
    std::vector<const Column*> sorted;
    for (const Column& each : columns)
        sorted.push_back(&each);
    std::sort(sorted.begin(), sorted.end(), [](const Column* a, const Column* b) {
        return std::pair(a->displayPosition, a->number) < std::pair(b->displayPosition, b->number);
    });
    return sorted;
}

const Column* TableDefinition::column(base::TextView name) const {
    for (const Column& each : columns) {
        if (base::equalsIgnoringAsciiCase(each.name, name)) return &each;
    }
    for (const Column& each : columns) {
        if (textsAreEqual(each.name, name)) return &each;
    }
    return nullptr;
}

const Column* TableDefinition::columnNumbered(std::uint16_t number) const {
    for (const Column& each : columns) {
        if (each.number == number) return &each;
    }
    return nullptr;
}

}  // namespace jet
