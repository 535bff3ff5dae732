#include <gmock/gmock.h>

#include "forms/Form.h"
#include "listutil/HeaderItem.h"
#include "listutil/cFormularsteuerung.h"
#include "tests/support/FakeHost.h"
#include "tests/support/FakeServices.h"

namespace tolv {
namespace {

using forms::ColumnHeader;
using forms::ListView;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr platform::WindowHandle kListWindow = 11;
constexpr platform::WindowHandle kHeaderWindow = 12;

struct WindowOnly : forms::ListViewPeer {
    void show(forms::Property) override {}
    void takeFocus() override {}
    void refresh() override {}
    forms::NativeHandle handle() const override { return kListWindow; }
    void ensureVisible(std::size_t) override {}
};

class cFormularsteuerungTest : public testing::Test {
protected:
    cFormularsteuerungTest() {
        list.setView(ListView::ViewMode::Report);
        list.addColumn(u"links", 100);
        list.addColumn(u"rechts", 100, ColumnHeader::Alignment::Right);
        list.addColumn(u"Mitte", 100, ColumnHeader::Alignment::Center);
        list.attachPeer(peer);
        messages.answer = [this](const test::FakeWindowMessages::Sent& sent) -> std::intptr_t {
            if (sent.message == 4127 && sent.window == kListWindow) return kHeaderWindow;
            if (sent.message == 4612 && sent.window == kHeaderWindow) {
                // NOLINTNEXTLINE(performance-no-int-to-ptr): messages carry addresses as numbers
                const auto& item = *reinterpret_cast<const HeaderItem*>(sent.lParam);
                marks.push_back(std::to_string(sent.wParam) + ": mask " + std::to_string(item.mask) + " format " +
                                std::to_string(item.format) + " image " + std::to_string(item.imageIndex));
            }
            return 0;
        };
    }

    test::Log log;
    test::FakeHost host{log};
    forms::Form form{host, u"form", u"Form"};
    WindowOnly peer;
    ListView list{form, u"list"};
    test::FakeWindowMessages messages;
    cFormularsteuerung utilities{messages};
    std::vector<std::string> marks;
};

TEST_F(cFormularsteuerungTest, theSortColumnAloneIsMarkedAndEveryHeaderKeepsItsAlignment) {
    utilities.SetHeaderIcon(list);
    EXPECT_THAT(marks, ElementsAre("0: mask 36 format 22528 image 0", "1: mask 36 format 16385 image 0",
                                   "2: mask 36 format 16386 image 0"));
    marks.clear();
    list.setSortKey(1);
    list.setSortOrder(ListView::Order::Descending);
    utilities.SetHeaderIcon(list);
    EXPECT_THAT(marks, ElementsAre("0: mask 36 format 16384 image 0", "1: mask 36 format 22529 image 1",
                                   "2: mask 36 format 16386 image 0"));
    marks.clear();
    list.setSortKey(3);
    utilities.SetHeaderIcon(list);
    EXPECT_THAT(marks, ElementsAre("0: mask 36 format 16384 image 0", "1: mask 36 format 16385 image 0",
                                   "2: mask 36 format 16386 image 0"))
        << "a sort key without a column";
}

TEST_F(cFormularsteuerungTest, everyColumnGetsItsWidthCodeInOrderAndOnlyInReportView) {
    utilities.SetColWidth(list, LVSCW_AUTOSIZE_USEHEADER);
    ASSERT_EQ(messages.sent.size(), 3U);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(messages.sent[i].window, kListWindow);
        EXPECT_EQ(messages.sent[i].message, 4126U);
        EXPECT_EQ(messages.sent[i].wParam, i);
        EXPECT_EQ(messages.sent[i].lParam, -2);
    }
    messages.sent.clear();
    list.setView(ListView::ViewMode::List);
    utilities.SetColWidth(list, 100);
    EXPECT_THAT(messages.sent, IsEmpty());
    ListView bare{form, u"bare"};
    bare.setView(ListView::ViewMode::Report);
    utilities.SetColWidth(bare, 100);
    EXPECT_THAT(messages.sent, IsEmpty()) << "no columns";
}

}  // namespace
}  // namespace tolv
