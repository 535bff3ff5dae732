#include <array>
#include <bit>
#include <gtest/gtest.h>

#include "tests/support/Tool.h"
#include "win32/FormPeer.h"

namespace {

constexpr COLORREF kBlack = RGB(0, 0, 0);
constexpr COLORREF kWhite = RGB(255, 255, 255);
constexpr COLORREF kMark = RGB(26, 235, 255);

/// While this lives, the process sees the colours of a contrast theme.
class ContrastTheme {
public:
    ContrastTheme() {
        for (std::size_t i = 0; i < kIndexes.size(); ++i)
            former_[i] = GetSysColor(kIndexes[i]);
        set({kBlack, kWhite, kBlack, kWhite, kMark, kBlack});
    }
    ContrastTheme(const ContrastTheme&) = delete;
    ContrastTheme& operator=(const ContrastTheme&) = delete;
    ~ContrastTheme() { set(former_); }

private:
    static constexpr std::array kIndexes = {COLOR_WINDOW,  COLOR_WINDOWTEXT, COLOR_BTNFACE,
                                            COLOR_BTNTEXT, COLOR_HIGHLIGHT,  COLOR_HIGHLIGHTTEXT};
    using Colors = std::array<COLORREF, kIndexes.size()>;

    static void set(const Colors& colors) {
        SetSysColors(static_cast<int>(kIndexes.size()), kIndexes.data(), colors.data());
    }

    Colors former_{};
};

/// A window's client area as the window paints it.
class Painted {
public:
    explicit Painted(HWND window) : screen_(nullptr, GetStockObject(SYSTEM_FONT)) {
        RECT client{};
        GetClientRect(window, &client);
        bitmap_ = win32::Bitmap(CreateCompatibleBitmap(screen_.get(), client.right, client.bottom));
        former_ = SelectObject(dc_.get(), bitmap_.get());
        SendMessageW(window, WM_PRINTCLIENT, reinterpret_cast<WPARAM>(dc_.get()), PRF_CLIENT | PRF_ERASEBKGND);
    }
    Painted(const Painted&) = delete;
    Painted& operator=(const Painted&) = delete;
    ~Painted() { SelectObject(dc_.get(), former_); }

    COLORREF at(LONG x, LONG y) const { return GetPixel(dc_.get(), x, y); }

private:
    win32::WindowDc screen_;
    win32::MemoryDc dc_{CreateCompatibleDC(screen_.get())};
    win32::Bitmap bitmap_;
    HGDIOBJ former_ = nullptr;
};

TEST(Contrast, SelectionWithoutFocusSortMarkAndRedButtonStayVisibleAfterAChangeOfColors) {
    test::Tool tool;
    tool.database.add(1, u"Abel");
    tool.database.add(2, u"Zorn");
    const win32::FormPeer peer(tool.window());
    tool.openAccountWindow();
    tool.window().txtUserNameDexo.userTyped(u"Abel anders");
    const ContrastTheme theme;
    SendMessageW(peer.window(), WM_SYSCOLORCHANGE, 0, 0);

    const auto list = std::bit_cast<HWND>(tool.window().lvwBenKto.hWnd());
    RECT row{};
    row.left = LVIR_BOUNDS;
    SendMessageW(list, LVM_GETITEMRECT, 0, reinterpret_cast<LPARAM>(&row));
    const Painted rows(list);
    EXPECT_EQ(rows.at(row.right - 4, row.top + 4), kMark) << "the selected row";
    EXPECT_EQ(rows.at(row.right - 4, row.bottom + 4), kBlack) << "the row below";

    const auto header = std::bit_cast<HWND>(SendMessageW(list, LVM_GETHEADER, 0, 0));
    const auto marks = std::bit_cast<HIMAGELIST>(SendMessageW(header, HDM_GETIMAGELIST, 0, 0));
    const win32::MemoryDc dc(CreateCompatibleDC(nullptr));
    const win32::WindowDc screen(nullptr, GetStockObject(SYSTEM_FONT));
    const win32::Bitmap bitmap(CreateCompatibleBitmap(screen.get(), 16, 16));
    const win32::Selected selected(dc.get(), bitmap.get());
    ImageList_Draw(marks, 0, dc.get(), 0, 0, ILD_TRANSPARENT);
    EXPECT_EQ(GetPixel(dc.get(), 8, 8), kWhite) << "the sort mark";

    const Painted save(std::bit_cast<HWND>(tool.window().cmdSpeichern.hWnd()));
    EXPECT_EQ(save.at(0, 0), kWhite) << "the edge of the red button";
    EXPECT_EQ(save.at(8, 8), RGB(255, 0, 0));
}

}  // namespace
