#include "jet/value/TextCodec.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "base/ByteView.h"
#include "jet/Errors.h"

namespace jet {
namespace {

constexpr char16_t kCompressedMark = 0xFEFF;  ///< U+FEFF as a unit, FF FE as bytes
constexpr std::size_t kFewestCompressedUnits = 3;

bool isCompressed(std::span<const std::uint8_t> stored) {
    return stored.size() >= 2 && stored[0] == 0xFF && stored[1] == 0xFE;
}

bool decodePlain(std::span<const std::uint8_t> stored, base::Text& text) {
    text.resize(stored.size() / 2);
    if constexpr (std::endian::native == std::endian::little) {
        if (!text.empty()) std::memcpy(text.data(), stored.data(), 2 * text.size());
    } else {
        for (std::size_t i = 0; i < text.size(); ++i)
            text[i] = base::u16At(stored, 2 * i);
    }
    return stored.size() % 2 == 0;
}

/// Each byte becomes one unit.
void appendWidened(std::span<const std::uint8_t> bytes, base::Text& text) {
    const std::size_t start = text.size();
    text.resize(start + bytes.size());
    std::copy(bytes.begin(), bytes.end(), text.begin() + static_cast<std::ptrdiff_t>(start));
}

/// The number of bytes before the first zero byte, or of all bytes if there is none.
std::size_t bytesBeforeZero(std::span<const std::uint8_t> bytes) {
    if (bytes.empty()) return 0;
    const void* zero = std::memchr(bytes.data(), 0, bytes.size());
    if (zero == nullptr) return bytes.size();
    return static_cast<std::size_t>(static_cast<const std::uint8_t*>(zero) - bytes.data());
}

bool decodeCompressed(std::span<const std::uint8_t> stored, base::Text& text) {
    text.clear();
    while (true) {
        const std::size_t count = bytesBeforeZero(stored);
        appendWidened(stored.first(count), text);
        if (count == stored.size()) return true;
        stored = stored.subspan(count + 1);
        while (!stored.empty() && stored[0] != 0) {
            if (stored.size() == 1) return false;
            text.push_back(base::u16At(stored, 0));
            stored = stored.subspan(2);
        }
        if (stored.empty()) return true;
        stored = stored.subspan(1);
    }
}

void appendUnit(base::Bytes& bytes, char16_t unit) {
    base::appendLittleEndian(bytes, unit, 2);
}

bool isOneByte(char16_t unit) {
    return unit >= 0x01 && unit <= 0xFF;
}

base::RuntimeError beginsWithMark() {
    return {static_cast<std::int32_t>(ErrorNumber::NotUpdated),
            u"Der Text kann nicht gespeichert werden; er beginnt mit dem Zeichen U+FEFF."};
}

/// Whether the original engine compresses this text if the column allows it.
bool isCompressible(base::TextView text) {
    return text.size() >= kFewestCompressedUnits && std::all_of(text.begin(), text.end(), isOneByte);
}

base::Bytes encodeCompressed(base::TextView text) {
    base::Bytes bytes;
    bytes.reserve(text.size() + 2);
    appendUnit(bytes, kCompressedMark);
    bool oneByte = true;
    for (const char16_t unit : text) {
        if (isOneByte(unit) != oneByte) {
            bytes.push_back(0);
            oneByte = !oneByte;
        }
        if (oneByte) {
            bytes.push_back(static_cast<std::uint8_t>(unit));
        } else if ((unit & 0xFFU) != 0) {
            appendUnit(bytes, unit);
        } else {
            throw beginsWithMark();
        }
    }
    return bytes;
}

}  // namespace

bool decodeText(std::span<const std::uint8_t> stored, base::Text& text) {
    return isCompressed(stored) ? decodeCompressed(stored.subspan(2), text) : decodePlain(stored, text);
}

std::optional<std::span<const std::uint8_t>> oneByteUnits(std::span<const std::uint8_t> stored) {
    if (!isCompressed(stored)) return std::nullopt;
    const auto units = stored.subspan(2);
    if (bytesBeforeZero(units) != units.size()) return std::nullopt;
    return units;
}

base::Bytes encodePlainText(base::TextView text) {
    if (text.starts_with(kCompressedMark)) throw beginsWithMark();
    base::Bytes bytes;
    bytes.reserve(2 * text.size());
    for (const char16_t unit : text)
        appendUnit(bytes, unit);
    return bytes;
}

base::Bytes encodeText(base::TextView text, bool compress) {
    const bool isCompressed = text.starts_with(kCompressedMark) || (compress && isCompressible(text));
    return isCompressed ? encodeCompressed(text) : encodePlainText(text);
}

}  // namespace jet
