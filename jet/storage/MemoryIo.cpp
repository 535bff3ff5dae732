#include "jet/storage/MemoryIo.h"

#include <algorithm>

#include "jet/Errors.h"

namespace jet {

void MemoryIo::read(std::uint64_t offset, std::span<std::uint8_t> bytes) {
    if (offset > bytes_.size() || bytes.size() > bytes_.size() - offset) throw deviceFailed(u"Speicher", 0);
    std::copy_n(bytes_.begin() + static_cast<std::ptrdiff_t>(offset), bytes.size(), bytes.begin());
}

void MemoryIo::write(std::uint64_t offset, std::span<const std::uint8_t> bytes) {
    bytes_.resize(std::max(bytes_.size(), static_cast<std::size_t>(offset) + bytes.size()));
    std::copy(bytes.begin(), bytes.end(), bytes_.begin() + static_cast<std::ptrdiff_t>(offset));
}

void MemoryIo::resize(std::uint64_t sizeBytes) {
    bytes_.resize(static_cast<std::size_t>(sizeBytes));
}

}  // namespace jet
