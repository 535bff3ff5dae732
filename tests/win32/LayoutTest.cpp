#include <algorithm>
#include <bit>
#include <functional>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <vector>

#include "app/frmLogin.h"
#include "tests/support/Tool.h"
#include "win32/FormPeer.h"

namespace {

/// Changes the user's text size for this process while it lives. Starts with the usual size.
class TextSize {
public:
    TextSize() {
        former_.cbSize = sizeof former_;
        SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof former_, &former_, 0);
        set(100);
    }
    TextSize(const TextSize&) = delete;
    TextSize& operator=(const TextSize&) = delete;
    ~TextSize() { SystemParametersInfoW(SPI_SETNONCLIENTMETRICS, sizeof former_, &former_, 0); }

    /// @param percent  of a font of 9 points
    void set(int percent) const {
        NONCLIENTMETRICSW metrics = former_;
        const int dpi = static_cast<int>(GetDpiForSystem());
        metrics.lfMessageFont.lfHeight = -MulDiv(9 * percent, dpi, 72 * 100);
        SystemParametersInfoW(SPI_SETNONCLIENTMETRICS, sizeof metrics, &metrics, 0);
    }

private:
    NONCLIENTMETRICSW former_{};
};

/// A control as shown by its native window.
struct Shown {
    const forms::Control* control;
    RECT rect;  ///< in the form's client area
    SIZE client;
    SIZE text;  ///< of its caption, or of one line, in the control's own font

    LONG width() const { return rect.right - rect.left; }
    LONG height() const { return rect.bottom - rect.top; }
};

SIZE extentIn(HWND window, std::wstring_view text) {
    const win32::WindowDc dc(window, std::bit_cast<HFONT>(SendMessageW(window, WM_GETFONT, 0, 0)));
    SIZE size{};
    GetTextExtentPoint32W(dc.get(), text.data(), static_cast<int>(text.size()), &size);
    return size;
}

Shown shown(const forms::Control& control, HWND form) {
    const auto window = std::bit_cast<HWND>(control.hWnd());
    Shown result{&control, {}, {}, {}};
    GetWindowRect(window, &result.rect);
    MapWindowPoints(nullptr, form, reinterpret_cast<POINT*>(&result.rect), 2);
    RECT client{};
    GetClientRect(window, &client);
    result.client = {client.right, client.bottom};
    std::wstring caption(64, L'\0');
    caption.resize(static_cast<std::size_t>(GetWindowTextW(window, caption.data(), 64)));
    result.text = extentIn(window, caption);
    result.text.cy = extentIn(window, L"Äg").cy;
    return result;
}

std::vector<Shown> allShown(const win32::FormPeer& peer) {
    std::vector<Shown> result;
    for (const win32::Place& place : win32::layoutOf(peer.form()).places) {
        for (const forms::Control* control : peer.form().Controls()) {
            if (control->Name() == place.control) result.push_back(shown(*control, peer.window()));
        }
    }
    EXPECT_EQ(result.size(), win32::layoutOf(peer.form()).places.size());
    return result;
}

bool encloses(const RECT& outer, const RECT& inner) {
    return outer.left <= inner.left && outer.top <= inner.top && outer.right >= inner.right &&
           outer.bottom >= inner.bottom;
}

/// Pixels that a control needs besides its caption: a button's edge, the square of a check box.
SIZE besideText(forms::Kind kind, int dpi) {
    if (kind == forms::Kind::CommandButton) return {8, 6};
    return {kind == forms::Kind::CheckBox ? 13 * dpi / 96 + 6 : 0, 0};
}

SIZE clientOf(const win32::FormPeer& peer) {
    RECT client{};
    GetClientRect(peer.window(), &client);
    return {client.right, client.bottom};
}

/// No text is clipped; no control is outside the window or overlaps another.
void expectReadable(const win32::FormPeer& peer, int dpi) {
    const auto all = allShown(peer);
    const RECT client{0, 0, clientOf(peer).cx, clientOf(peer).cy};
    for (const Shown& one : all) {
        SCOPED_TRACE(base::toUtf8(one.control->Name()));
        const forms::Kind kind = one.control->kind();
        EXPECT_TRUE(encloses(client, one.rect)) << one.rect.right << "x" << one.rect.bottom;
        if (kind == forms::Kind::Frame) continue;
        const SIZE beside = besideText(kind, dpi);
        if (kind != forms::Kind::TextBox && kind != forms::Kind::ListView) {
            EXPECT_GE(one.client.cx, one.text.cx + beside.cx);
        }
        EXPECT_GE(one.client.cy, one.text.cy + beside.cy);
        for (const Shown* other = &one + 1; other != all.data() + all.size(); ++other) {
            RECT common{};
            const bool isInFrame = other->control->kind() == forms::Kind::Frame && encloses(other->rect, one.rect);
            EXPECT_TRUE(isInFrame || IntersectRect(&common, &one.rect, &other->rect) == FALSE)
                << base::toUtf8(other->control->Name());
        }
    }
}

SIZE windowSize(const win32::FormPeer& peer) {
    RECT rect{};
    GetWindowRect(peer.window(), &rect);
    return {rect.right - rect.left, rect.bottom - rect.top};
}

void setClient(const win32::FormPeer& peer, SIZE client) {
    const SIZE window = windowSize(peer);
    const SIZE inner = clientOf(peer);
    SetWindowPos(peer.window(), nullptr, 0, 0, window.cx + client.cx - inner.cx, window.cy + client.cy - inner.cy,
                 SWP_NOZORDER | SWP_NOACTIVATE);
}

/// The rectangle in the message is far too small, so the window takes its smallest size.
void moveToResolution(const win32::FormPeer& peer, int dpi) {
    const RECT suggested{0, 0, 10, 10};
    SendMessageW(peer.window(), WM_DPICHANGED, static_cast<WPARAM>(MAKELONG(dpi, dpi)),
                 reinterpret_cast<LPARAM>(&suggested));
}

/// The texts have the size that the user wants, unless the smallest window would then be larger than the screen.
void expectTextSize(const win32::FormPeer& peer, int dpi) {
    const win32::FormLayout& layout = win32::layoutOf(peer.form());
    const win32::Fonts wanted = win32::fontsFor(layout, peer.form(), static_cast<unsigned>(dpi), {9999, 9999});
    const SIZE smallest = win32::smallestClientSize(layout, peer.form(), wanted.scale());
    RECT whole{0, 0, smallest.cx, smallest.cy};
    AdjustWindowRectExForDpi(&whole, static_cast<DWORD>(GetWindowLongPtrW(peer.window(), GWL_STYLE)), FALSE,
                             WS_EX_CONTROLPARENT, static_cast<UINT>(dpi));
    RECT screen{};
    SystemParametersInfoW(SPI_GETWORKAREA, 0, &screen, 0);
    const LONG line = allShown(peer).front().text.cy;
    const LONG wantedLine = wanted.extent(u"Äg", wanted.normal()).cy;
    if (whole.right - whole.left <= screen.right && whole.bottom - whole.top <= screen.bottom) {
        EXPECT_EQ(line, wantedLine);
        EXPECT_GE(clientOf(peer).cx, smallest.cx);
    } else if (dpi < 192) {
        EXPECT_LT(line, wantedLine);
        EXPECT_LE(windowSize(peer).cx, screen.right);
        EXPECT_LE(windowSize(peer).cy, screen.bottom);
    }
}

void expectReadableAtEverySize(const win32::FormPeer& peer, const TextSize& textSize) {
    for (const int dpi : {96, 120, 144, 192}) {
        for (const int percent : {100, 150, 225}) {
            SCOPED_TRACE(std::to_string(dpi) + " DPI, texts at " + std::to_string(percent) + " %");
            textSize.set(percent);
            moveToResolution(peer, dpi);
            expectTextSize(peer, dpi);
            const SIZE smallest = clientOf(peer);
            for (const SIZE size : {smallest, SIZE{smallest.cx * 6 / 5, smallest.cy * 7 / 5}, SIZE{1366, 740}}) {
                if (win32::layoutOf(peer.form()).resizable) setClient(peer, size);
                expectReadable(peer, dpi);
            }
        }
    }
}

/// The account window with two accounts, in real windows.
struct LayoutTest : testing::Test {
    LayoutTest() {
        tool.database.add(1, u"Abel");
        tool.database.add(2, u"Zorn");
        peer.emplace(tool.window());
        tool.openAccountWindow();
    }
    HWND list() const { return std::bit_cast<HWND>(window.lvwBenKto.hWnd()); }

    TextSize textSize;
    test::Tool tool;
    tolv::frmBenKto& window = tool.window();
    std::optional<win32::FormPeer> peer;
};

TEST_F(LayoutTest, NothingIsClippedOrCoveredAtAnySizeInAnyState) {
    const std::pair<const char*, std::function<void()>> states[] = {
        {"viewing", [] {}},
        {"changed", [this] { window.txtUserNameDexo.userTyped(u"Abel anders"); }},
        {"new", [this] { window.cmbAddNew.userClicked(); }},
        {"empty", [this] {
             tool.database.clear();
             window.cmbAddNew.userClicked();
         }}};
    for (const auto& [name, enter] : states) {
        SCOPED_TRACE(name);
        enter();
        expectReadableAtEverySize(*peer, textSize);
    }
}

TEST_F(LayoutTest, AChangedTextSizeIsAppliedAtOnceInBothDirections) {
    const auto measured = [this] {
        int mark = 0;
        const auto header = std::bit_cast<HWND>(SendMessageW(list(), LVM_GETHEADER, 0, 0));
        ImageList_GetIconSize(std::bit_cast<HIMAGELIST>(SendMessageW(header, HDM_GETIMAGELIST, 0, 0)), &mark, &mark);
        const Shown button = shown(window.cmdSpeichern, peer->window());
        const LRESULT names = SendMessageW(list(), LVM_GETCOLUMNWIDTH, 0, 0);
        return std::vector<LRESULT>{
            windowSize(*peer).cx, windowSize(*peer).cy, button.text.cy, button.width(), names, mark};
    };
    setClient(*peer, {640, 400});
    const auto usual = measured();
    for (const int percent : {150, 100}) {
        textSize.set(percent);
        SendMessageW(peer->window(), WM_SETTINGCHANGE, SPI_SETNONCLIENTMETRICS, 0);
        const auto now = measured();
        for (std::size_t i = 0; i < now.size(); ++i)
            EXPECT_NEAR(static_cast<double>(now[i]) / static_cast<double>(usual[i]), percent / 100.0,
                        percent > 100 ? 0.15 : 0.01)
                << "measure " << i;
    }
}

TEST_F(LayoutTest, AKeyOrAClickLoadsAnAccountOnce) {
    const auto loadsAfter = [this](auto&& act) {
        tool.log.clear();
        act();
        return std::count_if(tool.log.begin(), tool.log.end(),
                             [](const std::string& entry) { return entry.find("WHERE BenKTO_ID") != entry.npos; });
    };
    const auto press = [this](WPARAM key) { SendMessageW(list(), WM_KEYDOWN, key, 0); };
    const auto click = [this](int row) {
        RECT place{};
        place.left = LVIR_LABEL;
        SendMessageW(list(), LVM_GETITEMRECT, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&place));
        const LPARAM point = MAKELPARAM(place.left + 8, (place.top + place.bottom) / 2);
        PostMessageW(list(), WM_LBUTTONUP, 0, point);  // a native list waits for it
        SendMessageW(list(), WM_LBUTTONDOWN, MK_LBUTTON, point);
        for (MSG message{}; PeekMessageW(&message, list(), WM_LBUTTONUP, WM_LBUTTONUP, PM_REMOVE) != FALSE;)
            DispatchMessageW(&message);
    };
    EXPECT_EQ(loadsAfter([&] { press(VK_DOWN); }), 1);
    EXPECT_EQ(window.txtUserNameDexo.Text(), u"Zorn");
    EXPECT_EQ(loadsAfter([&] { press(VK_DOWN); }), 0) << "it is the last row already";
    EXPECT_EQ(loadsAfter([&] { click(0); }), 1);
    EXPECT_EQ(window.txtUserNameDexo.Text(), u"Abel");
    EXPECT_EQ(loadsAfter([&] { click(0); }), 1) << "a click on the selected row reads the account again";
    EXPECT_EQ(loadsAfter([&] { press(VK_END); }), 1);
}

TEST_F(LayoutTest, AResizedListKeepsItsSelectedRowVisibleAndTheWidthsSetByTheUser) {
    for (int id = 3; id < 100; ++id)
        tool.database.add(id, u"Konto " + base::decimal(id));
    for (int click = 0; click < 2; ++click)
        window.cmbAddNew.userClicked();  // the second click fills the list again
    const auto ask = [this](UINT message, WPARAM wParam = 0, LPARAM lParam = 0) {
        return static_cast<int>(SendMessageW(list(), message, wParam, lParam));
    };
    setClient(*peer, {640, 600});
    const int last = ask(LVM_GETCOUNTPERPAGE) - 1;
    window.lvwBenKto.ListItems(last + 1).Select();
    const auto isVisible = [&] {
        const int top = ask(LVM_GETTOPINDEX);
        return top <= last && last < top + ask(LVM_GETCOUNTPERPAGE);
    };
    setClient(*peer, {640, 400});
    EXPECT_LE(ask(LVM_GETCOUNTPERPAGE), last);
    EXPECT_TRUE(isVisible());
    ask(LVM_SCROLL, 0, 3000);
    EXPECT_FALSE(isVisible());
    const int top = ask(LVM_GETTOPINDEX);
    setClient(*peer, {640, 405});
    EXPECT_EQ(ask(LVM_GETTOPINDEX), top) << "the user has scrolled the selected row away";
    for (const int width : {60, 300}) {
        ask(LVM_SETCOLUMNWIDTH, 1, width);
        setClient(*peer, {640 + width, 405});
        EXPECT_EQ(ask(LVM_GETCOLUMNWIDTH, 1), width);
    }
}

TEST_F(LayoutTest, ExtraSpaceGoesToTheListAndThePath) {
    setClient(*peer, {620, 366});
    const auto small = allShown(*peer);
    setClient(*peer, {1020, 666});
    const auto large = allShown(*peer);
    for (std::size_t i = 0; i < small.size(); ++i) {
        const base::TextView name = small[i].control->Name();
        const bool takesWidth =
            name == u"lvwBenKto" || name == u"txtPathGlobal" || name == u"txtUserNameDexo" || name == u"Frame27";
        EXPECT_EQ(large[i].width() - small[i].width(), takesWidth ? 400 : 0) << base::toUtf8(name);
        EXPECT_EQ(large[i].height() - small[i].height(), name == u"lvwBenKto" ? 300 : 0) << base::toUtf8(name);
    }
}

TEST_F(LayoutTest, TheFirstSizeFitsASmallNotebookAt125Percent) {
    const SIZE client = win32::firstClientSize(win32::layoutOf(window), window, 120);
    RECT rect{0, 0, client.cx, client.cy};
    AdjustWindowRectExForDpi(&rect, WS_OVERLAPPEDWINDOW, FALSE, 0, 120);
    EXPECT_LE(rect.right - rect.left, 1366);
    EXPECT_LE(rect.bottom - rect.top, 768 - 50);  // minus a task bar at 125 %
}

TEST_F(LayoutTest, LoginDialogKeepsItsPositionsInTwipsAtEverySize) {
    peer.reset();
    tolv::frmLogin login(tool.host, tool.services.fileSystem, tool.services.messageBoxes);
    peer.emplace(login);
    for (const int dpi : {96, 192}) {
        moveToResolution(*peer, dpi);
        const auto pixels = [dpi](int twips) { return MulDiv(twips, dpi, 1440); };
        EXPECT_EQ(clientOf(*peer).cx, pixels(login.clientWidthTwips()));
        // The frame of the window does not follow the resolution here.
        EXPECT_GE(clientOf(*peer).cy, pixels(login.clientHeightTwips()));
        for (const Shown& one : allShown(*peer)) {
            const forms::Bounds& bounds = one.control->bounds();
            const RECT wanted{pixels(bounds.leftTwips), pixels(bounds.topTwips),
                              pixels(bounds.leftTwips + bounds.widthTwips),
                              pixels(bounds.topTwips + bounds.heightTwips)};
            EXPECT_TRUE(one.control == &login.Label6 || EqualRect(&one.rect, &wanted) != FALSE)
                << base::toUtf8(one.control->Name());
        }
    }
    expectReadableAtEverySize(*peer, textSize);
    moveToResolution(*peer, 96);
    textSize.set(100);
    SendMessageW(peer->window(), WM_SETTINGCHANGE, SPI_SETNONCLIENTMETRICS, 0);
    EXPECT_EQ(clientOf(*peer).cx, 330);
}

}  // namespace
