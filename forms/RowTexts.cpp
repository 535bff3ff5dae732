#include "forms/RowTexts.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace forms {
namespace {

constexpr std::size_t kUnitsPerNumber = 2;

std::size_t numberAt(const char16_t* place) {
    return static_cast<std::size_t>(place[0]) | static_cast<std::size_t>(place[1]) << 16U;
}

void putNumber(char16_t* place, std::size_t number) {
    place[0] = static_cast<char16_t>(number & 0xFFFFU);
    place[1] = static_cast<char16_t>(number >> 16U & 0xFFFFU);
}

}  // namespace

base::TextView RowTexts::cell(std::size_t index) const {
    const std::size_t count = cellCount();
    if (index >= count) return {};
    const std::size_t begin = index == 0 ? 0 : endOf(index - 1);
    const char16_t* units = block_.get() + kUnitsPerNumber * (1 + count);
    return {units + begin, endOf(index) - begin};
}

void RowTexts::setCell(std::size_t index, base::TextView text) {
    const std::size_t count = std::max(cellCount(), index + 1);
    std::size_t unitCount = 0;
    for (std::size_t i = 0; i < count; ++i)
        unitCount += (i == index ? text : cell(i)).size();

    const std::size_t tableUnits = kUnitsPerNumber * (1 + count);
    auto block = std::make_unique_for_overwrite<char16_t[]>(tableUnits + unitCount);
    putNumber(block.get(), count);
    std::size_t end = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const base::TextView source = i == index ? text : cell(i);
        std::copy(source.begin(), source.end(), block.get() + tableUnits + end);
        end += source.size();
        putNumber(block.get() + kUnitsPerNumber * (1 + i), end);
    }
    block_ = std::move(block);
}

std::size_t RowTexts::cellCount() const {
    return block_ == nullptr ? 0 : numberAt(block_.get());
}

std::size_t RowTexts::endOf(std::size_t index) const {
    return numberAt(block_.get() + kUnitsPerNumber * (1 + index));
}

}  // namespace forms
