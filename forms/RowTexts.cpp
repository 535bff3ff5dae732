#include "forms/RowTexts.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <utility>

namespace forms {
namespace {

constexpr std::size_t kUnitsPerNumber = 2;
constexpr std::size_t kFirstBlockUnits = 4096;
constexpr std::size_t kLargestBlockUnits = std::size_t{1} << 19U;

std::size_t numberAt(const char16_t* place) {
    return static_cast<std::size_t>(place[0]) | static_cast<std::size_t>(place[1]) << 16U;
}

void putNumber(char16_t* place, std::size_t number) {
    place[0] = static_cast<char16_t>(number & 0xFFFFU);
    place[1] = static_cast<char16_t>(number >> 16U & 0xFFFFU);
}

/// The place of a cell, or of the end if the index is the number of cells.
char16_t* placeOfCell(char16_t* units, std::size_t index) {
    char16_t* place = units + kUnitsPerNumber;
    for (; index > 0; --index)
        place += kUnitsPerNumber + numberAt(place);
    return place;
}

}  // namespace

char16_t* TextMemory::grow(char16_t* piece, std::size_t before, std::size_t after) {
    const bool isNewest = piece != nullptr && piece + before == end_;
    if (isNewest && after - before <= freeUnits_) {
        end_ += after - before;
        freeUnits_ -= after - before;
        return piece;
    }
    if (after > freeUnits_) useNextBlock(after);
    char16_t* place = std::exchange(end_, end_ + after);
    freeUnits_ -= after;
    std::copy_n(piece, before, place);
    return place;
}

void TextMemory::clear() {
    usedBlocks_ = 0;
    freeUnits_ = 0;
    end_ = nullptr;
}

/// If the next block is too small, it is replaced by a larger one.
void TextMemory::useNextBlock(std::size_t fewestUnits) {
    if (usedBlocks_ == blocks_.size()) blocks_.emplace_back();
    Block& block = blocks_[usedBlocks_];
    if (block.units < fewestUnits) {
        const std::size_t units =
            std::min(kFirstBlockUnits << std::min<std::size_t>(usedBlocks_, 16), kLargestBlockUnits);
        block.units = std::max(units, fewestUnits);
        block.memory = std::make_unique_for_overwrite<char16_t[]>(block.units);
    }
    ++usedBlocks_;
    end_ = block.memory.get();
    freeUnits_ = block.units;
}

base::TextView RowTexts::cell(std::size_t index) const {
    if (units_ == nullptr || index >= numberAt(units_)) return {};
    const char16_t* place = placeOfCell(units_, index);
    return {place + kUnitsPerNumber, numberAt(place)};
}

void RowTexts::setCell(TextMemory& memory, std::size_t index, base::TextView text) {
    const std::size_t count = units_ == nullptr ? 0 : numberAt(units_);
    const std::size_t size = units_ == nullptr ? 0 : static_cast<std::size_t>(placeOfCell(units_, count) - units_);
    const std::less<const char16_t*> isBefore;
    if (size > 0 && !isBefore(text.data(), units_) && isBefore(text.data(), units_ + size))
        return setCell(memory, index, base::Text(text));  // the row's own text would move while it is copied

    const std::size_t oldLength = cell(index).size();
    const std::size_t newCells = index < count ? 0 : index + 1 - count;
    const std::size_t head = size == 0 ? kUnitsPerNumber : 0;
    const std::size_t newSize = size + head + kUnitsPerNumber * newCells + text.size() - oldLength;
    if (size == 0 || newSize > size) units_ = memory.grow(units_, size, newSize);
    char16_t* end = units_ + size + head;
    for (std::size_t i = 0; i < newCells; ++i, end += kUnitsPerNumber)
        putNumber(end, 0);
    putNumber(units_, std::max(count, index + 1));
    char16_t* place = placeOfCell(units_, index);
    char16_t* textPlace = place + kUnitsPerNumber;
    const char16_t* later = textPlace + oldLength;
    std::memmove(textPlace + text.size(), later, static_cast<std::size_t>(end - later) * sizeof(char16_t));
    putNumber(place, text.size());
    std::copy(text.begin(), text.end(), textPlace);
}

}  // namespace forms
