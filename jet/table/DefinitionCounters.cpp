#include "jet/table/DefinitionCounters.h"

#include <cassert>

namespace jet {
namespace {

std::size_t distinctPlace(std::size_t index) {
    return DefinitionAt::kStatistics + kStatisticsBytes * index + StatisticsAt::kDistinctKeys;
}

}  // namespace

std::uint32_t DefinitionCounters::read(std::size_t offset) const {
    return store_.page(definition_.page).bytes.u32(offset);
}

void DefinitionCounters::write(std::size_t offset, std::uint32_t value) {
    assert(offset + 4 <= kPageSize);
    if (read(offset) != value) base::putU32(store_.change(definition_.page), offset, value);
}

std::uint32_t DefinitionCounters::rowCount() const {
    return read(DefinitionAt::kRowCount);
}

std::uint32_t DefinitionCounters::lastAutoNumber() const {
    return read(DefinitionAt::kAutoNumber);
}

void DefinitionCounters::setRowCount(std::uint32_t count) {
    write(DefinitionAt::kRowCount, count);
}

void DefinitionCounters::setLastAutoNumber(std::uint32_t number) {
    write(DefinitionAt::kAutoNumber, number);
}

std::uint32_t DefinitionCounters::distinctKeys(std::size_t index) const {
    return distinctPlace(index) + 4 <= kPageSize ? read(distinctPlace(index)) : 0;
}

/// A definition may have more indexes than the original engine makes. The counts of those that are on its second page
/// stay as they are.
void DefinitionCounters::setDistinctKeys(std::size_t index, std::uint32_t count) {
    if (distinctPlace(index) + 4 <= kPageSize) write(distinctPlace(index), count);
}

}  // namespace jet
