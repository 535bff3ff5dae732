#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <span>
#include <vector>

namespace base {

/// Thrown by a read outside a ByteView. It knows only the place; a caller that knows the page turns it into a
/// RuntimeError that names both.
class ByteRangeError : public std::exception {
public:
    ByteRangeError(std::size_t offset, std::size_t count, std::size_t size)
        : offsetBytes(offset), countBytes(count), sizeBytes(size) {}
    const char* what() const noexcept override { return "read outside the bytes"; }

    std::size_t offsetBytes;
    std::size_t countBytes;
    std::size_t sizeBytes;
};

/// The bytes of a file, with checked little-endian reads: no offset or length taken from a file can reach outside. Does
/// not own the bytes.
///
/// Every read throws ByteRangeError if it would leave the view.
class ByteView {
public:
    ByteView() = default;
    explicit ByteView(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

    std::size_t size() const { return bytes_.size(); }
    bool empty() const { return bytes_.empty(); }
    std::span<const std::uint8_t> bytes() const { return bytes_; }

    std::uint8_t u8(std::size_t offset) const { return at(offset, 1)[0]; }
    std::uint16_t u16(std::size_t offset) const { return static_cast<std::uint16_t>(read(offset, 2)); }
    std::uint32_t u24(std::size_t offset) const { return static_cast<std::uint32_t>(read(offset, 3)); }
    std::uint32_t u32(std::size_t offset) const { return static_cast<std::uint32_t>(read(offset, 4)); }
    std::uint64_t u64(std::size_t offset) const { return read(offset, 8); }
    std::int16_t i16(std::size_t offset) const { return static_cast<std::int16_t>(u16(offset)); }
    std::int32_t i32(std::size_t offset) const { return static_cast<std::int32_t>(u32(offset)); }
    std::int64_t i64(std::size_t offset) const { return static_cast<std::int64_t>(u64(offset)); }
    float f32(std::size_t offset) const { return std::bit_cast<float>(u32(offset)); }
    double f64(std::size_t offset) const { return std::bit_cast<double>(u64(offset)); }

    ByteView slice(std::size_t offset, std::size_t count) const { return ByteView(at(offset, count)); }
    ByteView from(std::size_t offset) const {
        if (offset > bytes_.size()) throw ByteRangeError(offset, 0, bytes_.size());
        return ByteView(bytes_.subspan(offset));
    }

private:
    std::span<const std::uint8_t> at(std::size_t offset, std::size_t count) const {
        if (offset > bytes_.size() || count > bytes_.size() - offset) {
            throw ByteRangeError(offset, count, bytes_.size());
        }
        return bytes_.subspan(offset, count);
    }

    std::uint64_t read(std::size_t offset, std::size_t count) const {
        std::uint64_t value = 0;
        const auto bytes = at(offset, count);
        for (std::size_t i = count; i > 0; --i)
            value = (value << 8U) | bytes[i - 1];
        return value;
    }

    std::span<const std::uint8_t> bytes_;
};

/// Writes the low `count` bytes of value at offset, least significant first; the place must be inside (the span asserts
/// it).
inline void putLittleEndian(std::span<std::uint8_t> bytes, std::size_t offset, std::uint64_t value, std::size_t count) {
    const auto place = bytes.subspan(offset, count);
    for (std::size_t i = 0; i < count; ++i)
        place[i] = static_cast<std::uint8_t>(value >> (8U * i));
}

/// Appends the low `count` bytes of value, least significant first.
inline void appendLittleEndian(std::vector<std::uint8_t>& bytes, std::uint64_t value, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        bytes.push_back(static_cast<std::uint8_t>(value >> (8U * i)));
}

/// The same, most significant first.
inline void appendBigEndian(std::vector<std::uint8_t>& bytes, std::uint64_t value, std::size_t count) {
    for (std::size_t i = count; i > 0; --i)
        bytes.push_back(static_cast<std::uint8_t>(value >> (8U * (i - 1))));
}

/// Reads without checking the bounds, for code that must be fast.
/// @param offset  at least two bytes before the end
inline std::uint16_t u16At(std::span<const std::uint8_t> bytes, std::size_t offset) {
    return static_cast<std::uint16_t>(bytes[offset] | (bytes[offset + 1] << 8U));
}

inline void putU16(std::span<std::uint8_t> bytes, std::size_t offset, std::uint16_t value) {
    putLittleEndian(bytes, offset, value, 2);
}
inline void putU24(std::span<std::uint8_t> bytes, std::size_t offset, std::uint32_t value) {
    putLittleEndian(bytes, offset, value, 3);
}
inline void putU32(std::span<std::uint8_t> bytes, std::size_t offset, std::uint32_t value) {
    putLittleEndian(bytes, offset, value, 4);
}
inline void putU64(std::span<std::uint8_t> bytes, std::size_t offset, std::uint64_t value) {
    putLittleEndian(bytes, offset, value, 8);
}

}  // namespace base
