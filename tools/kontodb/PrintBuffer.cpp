#include "tools/kontodb/PrintBuffer.h"

#include <utility>

namespace kontodb {
namespace {

/// So much is gathered before it is printed.
constexpr std::size_t kFullBytes = std::size_t{64} * 1024;

}  // namespace

void PrintBuffer::endLine() {
    put('\n');
    lineEnd_ = size_;
    if (size_ >= kFullBytes) flush();
}

void PrintBuffer::flush() {
    if (size_ == 0) return;
    console_.print({bytes_.get(), size_});
    size_ = 0;
    lineEnd_ = 0;
}

void PrintBuffer::grow(std::size_t bytes) {
    const std::size_t capacity = std::max({size_ + bytes, 2 * capacity_, kFullBytes});
    auto larger = std::make_unique_for_overwrite<char[]>(capacity);
    std::copy_n(bytes_.get(), size_, larger.get());
    bytes_ = std::move(larger);
    capacity_ = capacity;
}

}  // namespace kontodb
