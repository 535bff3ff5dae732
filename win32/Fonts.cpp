#include "win32/Fonts.h"

#include "win32/WideText.h"

namespace win32 {

namespace {

LOGFONTW messageFont(unsigned dpi) {
    NONCLIENTMETRICSW metrics{};
    metrics.cbSize = sizeof metrics;
    SystemParametersInfoForDpi(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0, dpi);
    return metrics.lfMessageFont;
}

}  // namespace

Fonts::Fonts(unsigned dpi) : dpi_(dpi) {
    LOGFONTW font = messageFont(dpi);
    normal_ = Font(CreateFontIndirectW(&font));
    font.lfWeight = FW_BOLD;
    bold_ = Font(CreateFontIndirectW(&font));
}

SIZE Fonts::extent(base::TextView text, HFONT font) const {
    const std::wstring wide = toWide(text);
    const WindowDc dc(nullptr, font);
    SIZE size{};
    GetTextExtentPoint32W(dc.get(), wide.c_str(), static_cast<int>(wide.size()), &size);
    return size;
}

}  // namespace win32
