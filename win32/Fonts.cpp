#include "win32/Fonts.h"

#include <cstring>

#include "win32/WideText.h"

namespace win32 {

namespace {

/// Height in pixels of a line in the usual message font at 96 DPI; the layout is made for it.
constexpr int kUsualLine = 16;

LOGFONTW messageFont(unsigned dpi) {
    NONCLIENTMETRICSW metrics{};
    metrics.cbSize = sizeof metrics;
    SystemParametersInfoForDpi(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0, dpi);
    return metrics.lfMessageFont;
}

}  // namespace

Fonts::Fonts(unsigned dpi) : Fonts(dpi, messageFont(dpi)) {}

Fonts::Fonts(unsigned dpi, const LOGFONTW& font) : dpi_(dpi), font_(font), normal_(CreateFontIndirectW(&font)) {
    LOGFONTW bold = font;
    bold.lfWeight = FW_BOLD;
    bold_ = Font(CreateFontIndirectW(&bold));
    const auto lineHeight = static_cast<int>(extent(u"Ag", bold_.get()).cy);
    scale_ = std::max(dpi, static_cast<unsigned>(MulDiv(lineHeight, USER_DEFAULT_SCREEN_DPI, kUsualLine)));
}

Fonts Fonts::smaller() const {
    LOGFONTW font = font_;
    font.lfHeight += font.lfHeight < 0 ? 1 : -1;
    return {dpi_, font};
}

bool Fonts::operator==(const Fonts& other) const {
    return dpi_ == other.dpi_ && scale_ == other.scale_ && std::memcmp(&font_, &other.font_, sizeof font_) == 0;
}

SIZE Fonts::extent(base::TextView text, HFONT font) const {
    const std::wstring wide = toWide(text);
    const WindowDc dc(nullptr, font);
    SIZE size{};
    GetTextExtentPoint32W(dc.get(), wide.c_str(), static_cast<int>(wide.size()), &size);
    return size;
}

}  // namespace win32
