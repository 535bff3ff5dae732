#include <algorithm>
#include <gtest/gtest.h>
#include <vector>

#include "app/frmLogin.h"
#include "tests/support/Tool.h"
#include "win32/Fonts.h"
#include "win32/Layout.h"

namespace {

constexpr unsigned kResolutions[] = {96, 120, 144, 192};

struct Placed {
    const win32::Place* place;
    forms::Control* control;
    RECT rect;

    LONG width() const { return rect.right - rect.left; }
    LONG height() const { return rect.bottom - rect.top; }
};

std::vector<Placed> placed(const forms::Form& form, SIZE client, unsigned dpi) {
    const win32::FormLayout& layout = win32::layoutOf(form);
    std::vector<Placed> result;
    for (const win32::Place& place : layout.places) {
        const auto control = std::find_if(form.Controls().begin(), form.Controls().end(),
                                          [&](const forms::Control* c) { return c->Name() == place.control; });
        if (control == form.Controls().end()) {
            ADD_FAILURE() << "no such control: " << base::toUtf8(place.control);
            continue;
        }
        result.push_back({&place, *control, win32::placeIn(client, place, layout, **control, dpi)});
    }
    return result;
}

const Placed& named(const std::vector<Placed>& all, base::TextView name) {
    return *std::find_if(all.begin(), all.end(), [&](const Placed& p) { return p.control->Name() == name; });
}

bool encloses(const RECT& outer, const RECT& inner) {
    return outer.left <= inner.left && outer.top <= inner.top && outer.right >= inner.right &&
           outer.bottom >= inner.bottom;
}

void expectNoOverlap(const std::vector<Placed>& all, SIZE client) {
    for (std::size_t i = 0; i < all.size(); ++i) {
        EXPECT_TRUE(encloses({0, 0, client.cx, client.cy}, all[i].rect)) << base::toUtf8(all[i].control->Name());
        for (std::size_t k = i + 1; k < all.size(); ++k) {
            RECT common{};
            const bool isInFrame = all[k].control->kind() == forms::Kind::Frame && encloses(all[k].rect, all[i].rect);
            EXPECT_TRUE(isInFrame || IntersectRect(&common, &all[i].rect, &all[k].rect) == FALSE)
                << base::toUtf8(all[i].control->Name()) << " and " << base::toUtf8(all[k].control->Name());
        }
    }
}

/// What a control's caption needs in width, with the bold and longer one of the save button.
LONG widthNeeded(const forms::Control& control, const win32::Fonts& fonts) {
    auto& mutableControl = const_cast<forms::Control&>(control);
    if (const auto* button = forms::as<forms::CommandButton>(mutableControl)) {
        const LONG normal = fonts.extent(button->Caption(), fonts.normal()).cx;
        const LONG changed = button->isGraphical() ? fonts.extent(u"Speichern (Strg+S)", fonts.bold()).cx : LONG{0};
        return std::max(normal, changed) + fonts.scaled(12);
    }
    if (const auto* box = forms::as<forms::CheckBox>(mutableControl)) {
        return fonts.extent(box->Caption(), fonts.normal()).cx + fonts.scaled(box->isGraphical() ? 12 : 20);
    }
    if (const auto* label = forms::as<forms::Label>(mutableControl)) {
        return fonts.extent(label->Caption(), fonts.normal()).cx;
    }
    return 0;
}

TEST(Layout, AccountWindowHasNoOverlapAndNoClippedCaptionAtAnySizeAndResolution) {
    test::Tool tool;
    const forms::Form& form = tool.window();
    const win32::FormLayout& layout = win32::layoutOf(form);
    for (const unsigned dpi : kResolutions) {
        SCOPED_TRACE(dpi);
        const win32::Fonts fonts(dpi);
        const SIZE smallest = win32::smallestClientSize(layout, dpi);
        const SIZE first = win32::firstClientSize(layout, form, dpi);
        for (const SIZE client : {smallest, first, SIZE{first.cx * 2, first.cy * 2}}) {
            const auto all = placed(form, client, dpi);
            expectNoOverlap(all, client);
            for (const Placed& one : all) {
                EXPECT_GE(one.width(), widthNeeded(*one.control, fonts)) << base::toUtf8(one.control->Name());
                if (one.control->kind() != forms::Kind::Frame) {
                    EXPECT_GE(one.height(), fonts.extent(u"Äg", fonts.normal()).cy)
                        << base::toUtf8(one.control->Name());
                }
            }
        }
    }
}

TEST(Layout, AccountWindowGivesItsRoomToTheListAndThePath) {
    test::Tool tool;
    const auto small = placed(tool.window(), {620, 366}, 96);
    const auto large = placed(tool.window(), {1020, 666}, 96);
    for (std::size_t i = 0; i < small.size(); ++i) {
        const base::TextView name = small[i].control->Name();
        const bool takesWidth =
            name == u"lvwBenKto" || name == u"txtPathGlobal" || name == u"txtUserNameDexo" || name == u"Frame27";
        EXPECT_EQ(large[i].width() - small[i].width(), takesWidth ? 400 : 0) << base::toUtf8(name);
        EXPECT_EQ(large[i].height() - small[i].height(), name == u"lvwBenKto" ? 300 : 0) << base::toUtf8(name);
    }
}

TEST(Layout, AccountWindowFitsASmallNotebookAt125Percent) {
    test::Tool tool;
    const SIZE client = win32::firstClientSize(win32::layoutOf(tool.window()), tool.window(), 120);
    RECT window{0, 0, client.cx, client.cy};
    AdjustWindowRectExForDpi(&window, WS_OVERLAPPEDWINDOW, FALSE, 0, 120);
    EXPECT_LE(window.right - window.left, 1366);
    EXPECT_LE(window.bottom - window.top, 768 - 50);  // a task bar at 125 %
}

TEST(Layout, NativeOrderIsTheTabOrderWithEachLabelBeforeItsBox) {
    test::Tool tool;
    tolv::frmLogin login(tool.host, tool.services.fileSystem, tool.services.messageBoxes);
    for (const forms::Form* form :
         {static_cast<const forms::Form*>(&tool.window()), static_cast<const forms::Form*>(&login)}) {
        std::vector<forms::Control*> stops;
        std::vector<base::Text> readersOrder;
        for (const Placed& one : placed(*form, {620, 366}, 96)) {
            if (one.control->canTakeFocus()) stops.push_back(one.control);
            readersOrder.push_back(one.control->Name());
        }
        EXPECT_EQ(stops, form->tabOrder()) << base::toUtf8(form->Name());
        for (const auto& [label, box] :
             {std::pair(u"Label1", u"txtUserNameDexo"), std::pair(u"Label5", u"txtPathGlobal"),
              std::pair(u"Label6", u"txtPasswort")}) {
            const auto found = std::find(readersOrder.begin(), readersOrder.end(), label);
            if (found != readersOrder.end()) {
                EXPECT_EQ(found[1], box);
            }
        }
    }
}

TEST(Layout, LoginDialogStandsExactlyWhereItsTwipsSay) {
    test::Tool tool;
    tolv::frmLogin login(tool.host, tool.services.fileSystem, tool.services.messageBoxes);
    const win32::FormLayout& layout = win32::layoutOf(login);
    const struct {
        unsigned dpi;
        SIZE client;
        RECT box, start, cancel;
    } cases[] = {{96, {330, 81}, {8, 24, 321, 43}, {8, 48, 161, 73}, {168, 48, 321, 73}},
                 {192, {660, 162}, {16, 48, 642, 86}, {16, 96, 322, 146}, {336, 96, 642, 146}}};
    for (const auto& c : cases) {
        const SIZE client = win32::firstClientSize(layout, login, c.dpi);
        EXPECT_EQ(client.cx, c.client.cx);
        EXPECT_EQ(client.cy, c.client.cy);
        const auto all = placed(login, client, c.dpi);
        EXPECT_NE(EqualRect(&named(all, u"txtPasswort").rect, &c.box), FALSE);
        EXPECT_NE(EqualRect(&named(all, u"cmdLogin").rect, &c.start), FALSE);
        EXPECT_NE(EqualRect(&named(all, u"cmdAbbrechen").rect, &c.cancel), FALSE);
        expectNoOverlap(all, client);
    }
}

}  // namespace
