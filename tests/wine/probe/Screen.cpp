#include <set>

#include "tests/wine/probe/Probe.h"

namespace probe {
namespace {

/// The colours of a rectangle of pixels, row by row, as 0x00RRGGBB. `paint` draws into the memory device context.
template <class Paint>
std::vector<std::uint32_t> pixels(int width, int height, Paint&& paint) {
    BITMAPINFO info{};
    info.bmiHeader = {sizeof info.bmiHeader, width, -height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    void* bits = nullptr;
    HDC memory = CreateCompatibleDC(nullptr);
    HBITMAP bitmap = CreateDIBSection(memory, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    HGDIOBJ former = SelectObject(memory, bitmap);
    paint(memory);
    GdiFlush();
    const auto* first = static_cast<const std::uint32_t*>(bits);
    std::vector<std::uint32_t> colours(first, first + static_cast<std::ptrdiff_t>(width) * height);
    for (std::uint32_t& colour : colours)
        colour &= 0xFFFFFFU;
    SelectObject(memory, former);
    DeleteObject(bitmap);
    DeleteDC(memory);
    return colours;
}

std::vector<std::uint32_t> screenPixels(const RECT& place) {
    const int width = place.right - place.left;
    const int height = place.bottom - place.top;
    if (width <= 0 || height <= 0) return {};
    return pixels(width, height, [&](HDC memory) {
        HDC screen = GetDC(nullptr);
        BitBlt(memory, 0, 0, width, height, screen, place.left, place.top, SRCCOPY);
        ReleaseDC(nullptr, screen);
    });
}

}  // namespace

Json coloursIn(const RECT& place) {
    const auto all = screenPixels(place);
    std::vector<Json> different;
    for (const std::uint32_t colour : std::set(all.begin(), all.end()))
        different.push_back(std::to_string(colour));
    return array(different);
}

Json iconShownAt(const RECT& place) {
    const auto shown = screenPixels(place);
    const int side = place.right - place.left;
    Json best = text(L"other");
    std::size_t fewest = shown.size() / 10;  // a tenth of the pixels may differ: edges are drawn half transparent
    for (const auto& [name, resource] : {std::pair(L"critical", IDI_ERROR),
                                         {L"question", IDI_QUESTION},
                                         {L"warning", IDI_WARNING},
                                         {L"information", IDI_INFORMATION}}) {
        const auto drawn = pixels(side, side, [&, icon = resource](HDC memory) {
            const RECT all = {0, 0, side, side};
            FillRect(memory, &all, GetSysColorBrush(COLOR_3DFACE));
            DrawIconEx(memory, 0, 0, LoadIconW(nullptr, icon), side, side, 0, nullptr, DI_NORMAL);
        });
        std::size_t different = 0;
        for (std::size_t i = 0; i < shown.size() && i < drawn.size(); ++i)
            different += shown[i] != drawn[i] ? 1U : 0U;
        if (different >= fewest) continue;
        fewest = different;
        best = text(name);
    }
    return best;
}

}  // namespace probe
