#include "win32/HeaderIcons.h"

namespace win32 {

namespace {

/// Colour bitmap and mask of one picture. Neither may be selected into a device context when they are used.
struct Picture {
    Bitmap color;
    Bitmap mask;
};

void fillTriangle(HDC dc, int sizePixels, bool pointsUp, COLORREF color) {
    // Each line is two pixels wider than the one before it, counted from the tip, so the sides are straight at any
    // size.
    const int height = sizePixels * 5 / 16;
    const int middle = sizePixels / 2;
    const int top = (sizePixels - height) / 2;
    const Brush brush(CreateSolidBrush(color));
    for (int line = 0; line < height; ++line) {
        const int y = pointsUp ? top + line : top + height - 1 - line;
        const RECT row{middle - line, y, middle + line + 1, y + 1};
        FillRect(dc, &row, brush.get());
    }
}

Bitmap drawn(HDC dc, Bitmap bitmap, int sizePixels, bool pointsUp, COLORREF ground, COLORREF triangle) {
    const Selected selected(dc, bitmap.get());
    const RECT whole{0, 0, sizePixels, sizePixels};
    const Brush brush(CreateSolidBrush(ground));
    FillRect(dc, &whole, brush.get());
    fillTriangle(dc, sizePixels, pointsUp, triangle);
    return bitmap;
}

Picture draw(forms::ImageList::Picture picture, int sizePixels) {
    const bool pointsUp = picture == forms::ImageList::Picture::SortAscending;
    const WindowDc screen(nullptr, GetStockObject(SYSTEM_FONT));
    const MemoryDc dc(CreateCompatibleDC(screen.get()));
    // Where the mask is white the background shows; the colour must be black there.
    return {drawn(dc.get(), Bitmap(CreateCompatibleBitmap(screen.get(), sizePixels, sizePixels)), sizePixels, pointsUp,
                  RGB(0, 0, 0), GetSysColor(COLOR_BTNTEXT)),
            drawn(dc.get(), Bitmap(CreateBitmap(sizePixels, sizePixels, 1, 1, nullptr)), sizePixels, pointsUp,
                  RGB(255, 255, 255), RGB(0, 0, 0))};
}

}  // namespace

IconList drawHeaderIcons(const std::vector<forms::ImageList::Picture>& pictures, int sizePixels) {
    IconList list(
        ImageList_Create(sizePixels, sizePixels, ILC_COLOR24 | ILC_MASK, static_cast<int>(pictures.size()), 0));
    for (const auto picture : pictures) {
        const Picture made = draw(picture, sizePixels);
        ImageList_Add(list.get(), made.color.get(), made.mask.get());
    }
    return list;
}

}  // namespace win32
