#pragma once

#include <concepts>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>

/// Text as the account file and Windows store it: UTF-16 units.
///
/// A Text may hold anything that a file holds: zero units, unpaired surrogates. Nothing here normalises, trims or
/// checks it.
namespace base {

using Text = std::u16string;
using TextView = std::u16string_view;

/// Decodes UTF-8; each malformed byte becomes U+FFFD.
Text fromUtf8(std::string_view utf8);

/// Encodes as UTF-8; an unpaired surrogate becomes U+FFFD.
std::string toUtf8(TextView text);

/// Decodes Windows code page 1252. The five bytes without a character (81, 8D, 8F, 90, 9D) become the
/// control character of the same number, as Windows does.
Text fromWindows1252(std::string_view bytes);

/// Encodes as Windows code page 1252; a character that the code page lacks becomes "?".
std::string toWindows1252(TextView text);

Text decimalOf(std::int64_t number);
Text decimalOf(std::uint64_t number);
/// Decimal digits, with a leading "-" for negative numbers; no grouping.
template <std::integral Number>
Text decimal(Number number) {
    // Widened first: the conversion itself in each size would make the exe 4 KB larger.
    return decimalOf(std::conditional_t<std::is_signed_v<Number>, std::int64_t, std::uint64_t>{number});
}

/// The text without leading and trailing U+0020. Tabs, line ends and no-break spaces stay.
TextView trimBlanks(TextView text);

/// The small letter for A to Z; any other unit unchanged.
constexpr char16_t asciiLower(char16_t unit) {
    return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit + (u'a' - u'A')) : unit;
}

/// Whether two names are equal, ignoring the case of A to Z only; all other units must be the same.
bool equalsIgnoringAsciiCase(TextView a, TextView b);

}  // namespace base
