#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

#include "win32/Fonts.h"
#include "win32/TextMeasure.h"

namespace {

LONG extentOf(HDC dc, const base::Text& text) {
    SIZE size{};
    GetTextExtentPoint32W(dc, reinterpret_cast<const wchar_t*>(text.data()), static_cast<int>(text.size()), &size);
    return size.cx;
}

TEST(TextMeasure, FindsTheWidthThatMeasuringEveryTextWouldFind) {
    std::mt19937 random(20);  // the result depends on this seed alone
    const base::Text letters = u"aWil ÄöüßMj.\\łŚ李\u0301A\U0001F600";
    for (const unsigned dpi : {96U, 144U, 192U}) {
        const win32::Fonts fonts(dpi);
        const win32::WindowDc dc(nullptr, fonts.normal());
        win32::TextMeasure measure(dc.get());
        LONG widest = 0;
        for (int i = 0; i < 500; ++i) {
            base::Text text;
            for (std::size_t length = random() % 30; length > 0; --length)
                text += letters[random() % letters.size()];
            measure.add(text);
            widest = std::max(widest, extentOf(dc.get(), text));
            ASSERT_EQ(measure.widest(), widest) << "text " << i << " at " << dpi << " DPI";
        }
    }
}

}  // namespace
