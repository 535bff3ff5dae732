#include <gmock/gmock.h>

#include "app/mPublic.h"
#include "forms/Form.h"
#include "listutil/HeaderItem.h"
#include "listutil/cFormularsteuerung.h"
#include "tests/support/Expect.h"
#include "tests/support/FakeHost.h"
#include "tests/support/FakeServices.h"

namespace tolv {
namespace {

using forms::ColumnHeader;
using forms::ListView;
using testing::ElementsAre;
using testing::IsEmpty;
using Order = ListView::Order;

constexpr platform::WindowHandle kListWindow = 11;  // of the peer
constexpr platform::WindowHandle kHeaderWindow = 12;

class cFormularsteuerungTest : public testing::Test {
protected:
    cFormularsteuerungTest() {
        list.setView(ListView::ViewMode::Report);
        list.addColumn(u"links", 100);
        list.addColumn(u"rechts", 100, ColumnHeader::Alignment::Right);
        list.addColumn(u"Mitte", 100, ColumnHeader::Alignment::Center);
        list.attachPeer(peer);
        objForm = std::make_unique<cFormularsteuerung>(messages, regional);
        messages.answer = [this](const test::FakeWindowMessages::Sent& sent) -> std::intptr_t {
            if (sent.message == 4127 && sent.window == kListWindow) return kHeaderWindow;
            if (sent.message == 4126 && sent.window == kListWindow)
                told.push_back(std::to_string(sent.wParam) + ": width " + std::to_string(sent.lParam));
            if (sent.message == 4612 && sent.window == kHeaderWindow) {
                // NOLINTNEXTLINE(performance-no-int-to-ptr): messages carry addresses as numbers
                const auto& item = *reinterpret_cast<const HeaderItem*>(sent.lParam);
                told.push_back(std::to_string(sent.wParam) + ": mask " + std::to_string(item.mask) + " format " +
                               std::to_string(item.format) + " image " + std::to_string(item.imageIndex));
            }
            return 0;
        };
    }

    void TearDown() override { objForm.reset(); }

    test::Log log;
    test::FakeHost host{log};
    forms::Form form{host, u"form", u"Form"};
    test::SilentPeer peer;
    ListView list{form, u"list"};
    test::FakeWindowMessages messages;
    test::FakeRegional regional;
    std::vector<std::string> told;  ///< messages that the native list and its header got
};

TEST_F(cFormularsteuerungTest, everySortReversesTheDirectionAndMarksOnlyItsColumn) {
    struct Case {
        int column;
        Order order;
        std::array<const char*, 3> marks;
    };
    for (const Case& c : {Case{1, Order::Descending, {"22528 image 1", "16385 image 0", "16386 image 0"}},
                          {1, Order::Ascending, {"22528 image 0", "16385 image 0", "16386 image 0"}},
                          {2, Order::Descending, {"16384 image 0", "22529 image 1", "16386 image 0"}},
                          {3, Order::Ascending, {"16384 image 0", "16385 image 0", "22530 image 0"}}}) {
        told.clear();
        objForm->Sort_ListView(list.ColumnHeaders(c.column), list);
        EXPECT_EQ(list.SortOrder(), c.order);
        EXPECT_EQ(list.SortKey(), c.column - 1);
        EXPECT_TRUE(list.Sorted());
        const auto mark = [&](std::size_t i) { return std::to_string(i) + ": mask 36 format " + c.marks[i]; };
        EXPECT_THAT(told, ElementsAre(mark(0), mark(1), mark(2)));
    }
    list.setSortKey(3);
    told.clear();
    objForm->SetHeaderIcon(list);
    EXPECT_EQ(told.back(), "2: mask 36 format 16386 image 0") << "a sort key without a column";
}

TEST_F(cFormularsteuerungTest, everyColumnGetsItsWidthCodeInOrderAndOnlyInReportView) {
    objForm->SetColWidth(list, LVSCW_AUTOSIZE_USEHEADER);
    EXPECT_THAT(told, ElementsAre("0: width -2", "1: width -2", "2: width -2"));
    messages.sent.clear();
    list.setView(ListView::ViewMode::List);
    objForm->SetColWidth(list, 100);
    EXPECT_THAT(messages.sent, IsEmpty());
}

TEST_F(cFormularsteuerungTest, typedColumnsAreRewrittenToBeSortedAndThenWrittenBack) {
    using Texts = std::vector<base::Text>;
    struct Case {
        base::Text tag;
        Texts before;
        Texts after;             ///< in ascending order
        std::int32_t error = 0;  ///< of a value of the wrong type, which stops the rewriting of the sorted rows
    };
    for (const Case& c : {
             Case{
                 u"DATE", {u"24.12.2023", u"01.01.2024", u"15.06.2022"}, {u"15.06.2022", u"24.12.2023", u"01.01.2024"}},
             {u"DATE", {u"01.01.23"}, {u"23.1..01.0"}},
             {u"DATE", {u"1.1.2023"}, {u"23.20.1.1."}},
             {u"DATE", {u"Benutzer 1", u"1.1.23", u"01.1.2023", u""}, {u"", u"01.1.2023", u"1.1.23", u"Benutzer 1"}},
             {u"date", {u"24.12.2023", u"01.01.2024", u"01.01.23"}, {u"01.01.2024", u"01.01.23", u"24.12.2023"}},
             {u"DATE ", {u"20231224"}, {u"20231224"}},
             {u"NUMBER", {u"0042", u"0007", u"0100"}, {u"7", u"42", u"100"}},
             {u"NUMBER", {u"9", u"10"}, {u"10", u"9"}},
             {u"", {u"0042", u"b", u"A"}, {u"0042", u"A", u"b"}},
             {u"VONBIS", {}, {}},
             {u"VONBIS", {u"5-7", u"1-3"}, {u"1-3", u"5-7"}, 9},
             {u"NUMBER", {u"05", u"x", u"01"}, {u"1", u"5", u"x"}, 13},
             {u"NUMBER", {u"4,0", u"3000000000", u"01"}, {u"1", u"3000000000", u"4,0"}, 6},
         }) {
        for (const int column : {1, 2}) {
            ListView typed(form, u"typed");
            typed.sortKeyOf = [this](base::TextView text) { return regional.sortKey(text); };
            for (int index = 1; index <= 2; ++index)
                typed.addColumn(u"", 100, ColumnHeader::Alignment::Left, index == column ? c.tag : base::Text());
            for (const base::Text& value : c.before) {
                forms::ListItem item = typed.addRow();
                item.setText(value);
                item.setSubItems(1, value);
            }
            typed.setSortOrder(Order::Descending);
            EXPECT_EQ(test::errorOf([&] { objForm->Sort_ListView(typed.ColumnHeaders(column), typed); }), c.error);
            Texts after;
            for (std::size_t place = 0; place < c.before.size(); ++place)
                after.emplace_back(typed.cellAt(place, column - 1));
            EXPECT_EQ(after, c.after) << test::shown(c.tag) << " in column " << column;
        }
    }
}

}  // namespace
}  // namespace tolv
