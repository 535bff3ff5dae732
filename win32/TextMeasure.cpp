#include "win32/TextMeasure.h"

#include <algorithm>

namespace win32 {

TextMeasure::TextMeasure(HDC dc) : dc_(dc) {
    TEXTMETRICW metrics{};
    GetTextMetricsW(dc, &metrics);
    slack_ = metrics.tmOverhang + 1;
    if (GetCharWidth32W(dc, 0, kSimpleLetters - 1, widths_.data()) == FALSE) widths_.fill(metrics.tmMaxCharWidth);
}

std::optional<int> TextMeasure::bound(base::TextView text) const {
    int sum = slack_;
    for (const char16_t letter : text) {
        if (letter >= kSimpleLetters) return std::nullopt;
        sum += widths_[letter];
    }
    return sum;
}

void TextMeasure::add(base::TextView text) {
    const std::optional<int> atMost = bound(text);
    if (atMost && *atMost <= widest_) return;
    SIZE size{};
    GetTextExtentPoint32W(dc_, reinterpret_cast<const wchar_t*>(text.data()), static_cast<int>(text.size()), &size);
    widest_ = std::max(widest_, static_cast<int>(size.cx));
}

}  // namespace win32
