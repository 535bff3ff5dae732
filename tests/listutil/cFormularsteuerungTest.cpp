#include <array>
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
            if (sent.message == 4612 && sent.window == kHeaderWindow) {
                // NOLINTNEXTLINE(performance-no-int-to-ptr): messages carry addresses as numbers
                const auto& item = *reinterpret_cast<const HeaderItem*>(sent.lParam);
                marks.push_back(std::to_string(sent.wParam) + ": mask " + std::to_string(item.mask) + " format " +
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
    cFormularsteuerung utilities{messages, regional};  // a second one, apart from the shared object
    std::vector<std::string> marks;
};

TEST_F(cFormularsteuerungTest, theSortColumnAloneIsMarkedAndEveryHeaderKeepsItsAlignment) {
    struct Case {
        std::int16_t key;
        ListView::Order order;
        std::array<const char*, 3> marks;
    };
    for (const Case& c : {Case{0, ListView::Order::Ascending, {"22528 image 0", "16385 image 0", "16386 image 0"}},
                          {1, ListView::Order::Descending, {"16384 image 0", "22529 image 1", "16386 image 0"}},
                          // a sort key without a column
                          {3, ListView::Order::Descending, {"16384 image 0", "16385 image 0", "16386 image 0"}}}) {
        list.setSortKey(c.key);
        list.setSortOrder(c.order);
        marks.clear();
        utilities.SetHeaderIcon(list);
        ASSERT_EQ(marks.size(), 3U);
        for (std::size_t i = 0; i < 3; ++i)
            EXPECT_EQ(marks[i], std::to_string(i) + ": mask 36 format " + c.marks[i]);
    }
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

/// A list of two columns, one of which holds values of this type.
struct TypedList {
    using Texts = std::vector<base::Text>;

    TypedList(forms::Form& form, int typedColumn, const base::Text& tag, const Texts& values)
        : list(form, u"typed"), column(typedColumn) {
        list.setView(ListView::ViewMode::Report);
        list.sortKeyOf = [](base::TextView text) { return test::FakeRegional().sortKey(text); };
        for (int index = 1; index <= 2; ++index)
            list.addColumn(u"", 100, ColumnHeader::Alignment::Left, index == column ? tag : base::Text());
        for (const base::Text& value : values) {
            forms::ListItem item = list.addRow();
            item.setText(column == 1 ? value : u"x");
            item.setSubItems(1, column == 1 ? u"x" : value);
        }
        list.setSortOrder(ListView::Order::Descending);  // so that the first sort is ascending
    }
    Texts values() {
        Texts values;
        for (int index = 1; index <= list.rowCount(); ++index)
            values.emplace_back(column == 1 ? list.ListItems(index).Text() : list.ListItems(index).SubItems(1));
        return values;
    }

    ListView list;
    int column;
};

TEST_F(cFormularsteuerungTest, everySortReversesTheDirectionWhicheverColumnItIs) {
    struct Case {
        int column;
        std::size_t mark;
        const char* format;
    };
    for (const int rows : {0, 2}) {
        ListView::Order order = list.SortOrder();
        for (int i = 0; i < rows; ++i)
            list.addRow().setText(i == 0 ? u"a" : u"b");
        for (const Case& c :
             {Case{1, 0, "22528"}, {1, 0, "22528"}, {2, 1, "22529"}, {3, 2, "22530"}, {3, 2, "22530"}}) {
            marks.clear();
            utilities.Sort_ListView(list.ColumnHeaders(c.column), list);
            order = order == ListView::Order::Ascending ? ListView::Order::Descending : ListView::Order::Ascending;
            EXPECT_EQ(list.SortOrder(), order);
            EXPECT_EQ(list.SortKey(), c.column - 1);
            EXPECT_TRUE(list.Sorted());
            ASSERT_EQ(marks.size(), 3U);
            EXPECT_EQ(marks[c.mark], std::to_string(c.mark) + ": mask 36 format " + c.format + " image " +
                                         (order == ListView::Order::Descending ? "1" : "0"));
        }
        list.setSortOrder(ListView::Order::Ascending);
    }
}

TEST_F(cFormularsteuerungTest, typedColumnsSortByARewrittenFormAndAreWrittenBack) {
    using Texts = TypedList::Texts;
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
             {u"NUMBER", {u"2,5", u" 8 ", u"+5", u"-0"}, {u"8", u"5", u"0", u"2"}},
             {u"", {u"0042", u"b", u"A"}, {u"0042", u"A", u"b"}},
             {u"DATE", {}, {}},
             {u"NUMBER", {}, {}},
             {u"VONBIS", {}, {}},
             {u"VONBIS", {u"5-7", u"1-3"}, {u"1-3", u"5-7"}, 9},
             {u"NUMBER", {u"05", u"x", u"01"}, {u"1", u"5", u"x"}, 13},
             {u"NUMBER", {u"05", u"", u"01"}, {u"", u"01", u"05"}, 13},
             {u"NUMBER", {u"4,0", u"3000000000", u"01"}, {u"1", u"3000000000", u"4,0"}, 6},
         }) {
        for (const int column : {1, 2}) {
            TypedList typed(form, column, c.tag, c.before);
            messages.sent.clear();
            EXPECT_EQ(test::errorOf([&] { utilities.Sort_ListView(typed.list.ColumnHeaders(column), typed.list); }),
                      c.error);
            EXPECT_EQ(typed.values(), c.after) << test::shown(c.tag) << " in column " << column;
            EXPECT_EQ(typed.list.SortOrder(), ListView::Order::Ascending);
            EXPECT_EQ(messages.sent.size(), 4U) << "both headers are marked";
        }
    }
}

}  // namespace
}  // namespace tolv
