#include "jet/value/GuidText.h"

#include <algorithm>

namespace jet {
namespace {

constexpr base::TextView kForm = u"{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}";

void turnIntegers(std::array<std::uint8_t, 16>& bytes) {
    std::reverse(bytes.begin(), bytes.begin() + 4);
    std::reverse(bytes.begin() + 4, bytes.begin() + 6);
    std::reverse(bytes.begin() + 6, bytes.begin() + 8);
}

/// @return -1 if the unit is not a hexadecimal digit
int digitOf(char16_t unit) {
    if (unit >= u'0' && unit <= u'9') return unit - u'0';
    if (unit >= u'a' && unit <= u'f') return unit - u'a' + 10;
    if (unit >= u'A' && unit <= u'F') return unit - u'A' + 10;
    return -1;
}

}  // namespace

std::array<std::uint8_t, 16> asWritten(const base::Guid& guid) {
    auto bytes = guid.bytes;
    turnIntegers(bytes);
    return bytes;
}

std::optional<base::Guid> guidFromText(base::TextView text) {
    text = base::trimBlanks(text);
    if (text.size() != kForm.size()) return std::nullopt;
    base::Guid guid;
    std::size_t digits = 0;
    for (std::size_t i = 0; i < kForm.size(); ++i) {
        if (kForm[i] != u'X') {
            if (text[i] != kForm[i]) return std::nullopt;
            continue;
        }
        const int digit = digitOf(text[i]);
        if (digit < 0) return std::nullopt;
        std::uint8_t& byte = guid.bytes[digits++ / 2];
        byte = static_cast<std::uint8_t>(byte << 4U | static_cast<unsigned>(digit));
    }
    turnIntegers(guid.bytes);
    return guid;
}

}  // namespace jet
