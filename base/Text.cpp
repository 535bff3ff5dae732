#include "base/Text.h"

#include <algorithm>
#include <array>

namespace base {
namespace {

constexpr char16_t kReplacement = 0xFFFD;

/// The characters of the bytes 80 to 9F; the five unassigned bytes keep their number.
constexpr std::array<char16_t, 32> kWindows1252High = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                                       0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                                       0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                                       0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

struct Decoded {
    char32_t codePoint;
    std::size_t byteCount;
};

/// Decodes one code point; a malformed sequence gives U+FFFD for its first byte alone.
Decoded decodeUtf8(std::string_view rest) {
    const auto byteAt = [rest](std::size_t i) { return static_cast<unsigned char>(rest[i]); };
    const unsigned lead = byteAt(0);
    if (lead < 0x80) return {lead, 1};
    std::size_t count = 0;
    char32_t value = 0;
    char32_t least = 0;
    if (lead >= 0xC2 && lead <= 0xDF) {
        count = 2, value = lead & 0x1FU, least = 0x80;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        count = 3, value = lead & 0x0FU, least = 0x800;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        count = 4, value = lead & 0x07U, least = 0x10000;
    } else {
        return {kReplacement, 1};
    }
    if (rest.size() < count) return {kReplacement, 1};
    for (std::size_t i = 1; i < count; ++i) {
        if ((byteAt(i) & 0xC0U) != 0x80U) return {kReplacement, 1};
        value = (value << 6U) | (byteAt(i) & 0x3FU);
    }
    const bool surrogate = value >= 0xD800 && value <= 0xDFFF;
    if (value < least || value > 0x10FFFF || surrogate) return {kReplacement, 1};
    return {value, count};
}

void appendUtf8(std::string& out, char32_t codePoint) {
    const auto push = [&out](char32_t byte) { out.push_back(static_cast<char>(static_cast<unsigned char>(byte))); };
    if (codePoint < 0x80) {
        push(codePoint);
    } else if (codePoint < 0x800) {
        push(0xC0U | (codePoint >> 6U));
        push(0x80U | (codePoint & 0x3FU));
    } else if (codePoint < 0x10000) {
        push(0xE0U | (codePoint >> 12U));
        push(0x80U | ((codePoint >> 6U) & 0x3FU));
        push(0x80U | (codePoint & 0x3FU));
    } else {
        push(0xF0U | (codePoint >> 18U));
        push(0x80U | ((codePoint >> 12U) & 0x3FU));
        push(0x80U | ((codePoint >> 6U) & 0x3FU));
        push(0x80U | (codePoint & 0x3FU));
    }
}

}  // namespace

Text fromUtf8(std::string_view utf8) {
    Text out;
    out.reserve(utf8.size());
    while (!utf8.empty()) {
        const Decoded next = decodeUtf8(utf8);
        utf8.remove_prefix(next.byteCount);
        if (next.codePoint < 0x10000) {
            out.push_back(static_cast<char16_t>(next.codePoint));
        } else {
            const char32_t rest = next.codePoint - 0x10000;
            out.push_back(static_cast<char16_t>(0xD800U + (rest >> 10U)));
            out.push_back(static_cast<char16_t>(0xDC00U + (rest & 0x3FFU)));
        }
    }
    return out;
}

std::string toUtf8(TextView text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char32_t unit = text[i];
        if (unit < 0xD800 || unit > 0xDFFF) {
            appendUtf8(out, unit);
            continue;
        }
        const bool paired = unit < 0xDC00 && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] <= 0xDFFF;
        if (paired) {
            appendUtf8(out, 0x10000 + ((unit - 0xD800) << 10U) + (text[i + 1] - 0xDC00U));
            ++i;
        } else {
            appendUtf8(out, kReplacement);
        }
    }
    return out;
}

Text fromWindows1252(std::string_view bytes) {
    Text out;
    out.reserve(bytes.size());
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        out.push_back(byte >= 0x80 && byte < 0xA0 ? kWindows1252High[byte - 0x80U] : static_cast<char16_t>(byte));
    }
    return out;
}

std::string toWindows1252(TextView text) {
    std::string out;
    out.reserve(text.size());
    for (const char16_t unit : text) {
        if (unit < 0x80 || (unit >= 0xA0 && unit <= 0xFF)) {
            out.push_back(static_cast<char>(static_cast<unsigned char>(unit)));
            continue;
        }
        const auto* found = std::find(kWindows1252High.begin(), kWindows1252High.end(), unit);
        const auto index = static_cast<unsigned>(found - kWindows1252High.begin());
        out.push_back(found == kWindows1252High.end() ? '?'
                                                      : static_cast<char>(static_cast<unsigned char>(0x80U + index)));
    }
    return out;
}

Text decimalOf(std::int64_t number) {
    const std::string digits = std::to_string(number);
    return Text(digits.begin(), digits.end());
}

Text decimalOf(std::uint64_t number) {
    const std::string digits = std::to_string(number);
    return Text(digits.begin(), digits.end());
}

TextView trimBlanks(TextView text) {
    const auto first = text.find_first_not_of(u' ');
    if (first == TextView::npos) return {};
    return text.substr(first, text.find_last_not_of(u' ') - first + 1);
}

bool equalsIgnoringAsciiCase(TextView a, TextView b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char16_t x, char16_t y) { return asciiLower(x) == asciiLower(y); });
}

}  // namespace base
