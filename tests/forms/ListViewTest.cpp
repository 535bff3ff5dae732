#include <gmock/gmock.h>
#include <random>
#include <set>

#include "forms/Form.h"
#include "forms/ListView.h"
#include "tests/support/Expect.h"
#include "tests/support/FakeHost.h"
#include "tests/support/FakeServices.h"

namespace forms {
namespace {

using test::errorOf;
using testing::ElementsAre;
using testing::IsEmpty;

class ListViewTest : public testing::Test {
protected:
    ListViewTest() {
        list.sortKeyOf = [](base::TextView text) { return test::FakeRegional().sortKey(text); };
        list.areEqual = [](base::TextView a, base::TextView b) { return test::FakeRegional().compare(a, b) == 0; };
        list.onItemClick = [this](const ListItem& item) { clicks.push_back(base::toUtf8(item.Text())); };
    }

    ListItem add(base::TextView text, base::TextView subItem = {}) {
        ListItem item = list.addRow();
        item.setText(text);
        item.setSubItems(1, subItem);
        return item;
    }
    void addAll(std::initializer_list<base::TextView> texts) {
        for (const base::TextView text : texts)
            add(text);
    }
    /// All texts of a column in the current order, joined.
    std::string shown(int column = 0) {
        std::string result;
        for (int place = 0; place < list.rowCount(); ++place)
            result += base::toUtf8(list.cellAt(static_cast<std::size_t>(place), column)) + " ";
        return result;
    }

    test::Log log;
    test::FakeHost host{log};
    Form form{host, u"form", u"Form"};
    ListView list{form, u"list"};
    test::Log clicks;
};

TEST_F(ListViewTest, keysAreUniqueTextsIgnoringCaseAndAreRemovedWithTheirRows) {
    ListItem first = add(u"first");
    ListItem second = add(u"second");
    first.setKey(u"BenKto:3");
    struct Case {
        base::TextView key;
        std::int32_t error;
    };
    for (const Case& c : {Case{u"BenKto:3", 35602},
                          {u"BENKTO:3", 35602},
                          {u"17", 35603},
                          {u" -1.5 ", 35603},
                          {u"", 0},
                          {u"BenKto:17", 0},
                          {u"benkto:17", 0},
                          {u"BenKto:18", 0}}) {
        EXPECT_EQ(errorOf([&] { second.setKey(c.key); }), c.error) << test::shown(c.key);
    }
    EXPECT_TRUE(list.ListItems(u"benkto:3") == first);
    EXPECT_TRUE(list.ListItems(u"BenKto:18") == second);
    EXPECT_EQ(errorOf([&] { list.ListItems(u"BenKto:17"); }), 35601) << "the former key of the row";
    EXPECT_EQ(errorOf([&] { list.ListItems(u""); }), 35601);
    EXPECT_EQ(errorOf([&] { list.ListItems(0); }), 35600);
    EXPECT_EQ(errorOf([&] { list.ListItems(3); }), 35600);
    EXPECT_EQ(errorOf([&] { list.ColumnHeaders(1); }), 35600);

    list.clearRows();
    EXPECT_EQ(errorOf([&] { list.ListItems(u"BenKto:3"); }), 35601);
    add(u"again").setKey(u"BenKto:3");
    EXPECT_EQ(errorOf([&] { (void)first.Text(); }), 35601) << "a handle of a removed row";
}

TEST_F(ListViewTest, textsTagAndKeyOfARowDoNotOverwriteEachOther) {
    for (const std::size_t length : {70000U, 10U, 600000U}) {
        list.clearRows();  // the new rows reuse the memory
        ListItem item = list.addRow();
        item.setSubItems(2, u"zwei");
        item.setText(base::Text(length, u'x'));
        item.setKey(u"k:1");
        item.setTag(std::int32_t{17});
        item.setSubItems(1, item.SubItems(2));  // a view into the memory that this call moves
        item.setText(u"kurz");
        EXPECT_EQ(item.Text(), u"kurz");
        EXPECT_EQ(item.SubItems(1), u"zwei");
        EXPECT_EQ(item.SubItems(2), u"zwei");
        EXPECT_EQ(item.SubItems(9), u"");
        EXPECT_EQ(item.Key(), u"k:1");
        EXPECT_EQ(item.Tag(), base::Value(std::int32_t{17}));
        EXPECT_EQ(errorOf([&] { item.setSubItems(0, u"x"); }), 35600);
    }
}

TEST_F(ListViewTest, changingTheOrderSortsOnceAndMakesOneKeyForEachRow) {
    int keysMade = 0;
    list.sortKeyOf = [&](base::TextView text) {
        ++keysMade;
        return test::FakeRegional().sortKey(text);
    };
    for (const base::TextView text : {u"b1", u"C1", u"c3", u"a2"})
        add(text.substr(0, 1), text.substr(1));
    list.setSortOrder(ListView::Order::Descending);
    EXPECT_EQ(shown(), "b C c a ") << "nothing moves before Sorted";
    list.setSorted(true);
    EXPECT_EQ(shown(), "C c b a ");
    EXPECT_EQ(keysMade, 4) << "one for each row, however many comparisons";
    list.setSortKey(1);
    list.setSortOrder(ListView::Order::Ascending);
    list.setSorted(true);
    EXPECT_EQ(shown(), "C b a c ");
    EXPECT_EQ(keysMade, 8) << "key and direction set together";
    list.setSorted(true);
    EXPECT_EQ(keysMade, 8) << "nothing has changed";
    list.setSortKey(7);
    EXPECT_EQ(shown(), "C b a c ") << "a column that no row has: all are equal";
}

TEST_F(ListViewTest, randomStepsGiveTheSameOrderAsAPlainList) {
    const unsigned seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    struct Plain {
        std::array<base::Text, 2> texts;
        int tag;
    };
    std::vector<Plain> plain;  // in the current order
    std::vector<Plain> added;  // not sorted in yet
    bool isSorted = false, isDescending = false;
    std::size_t key = 0;
    list.sortKeyOf = nullptr;  // compares UTF-16 units
    const auto before = [&](const Plain& a, const Plain& b) {
        const int order = a.texts[key].compare(b.texts[key]);
        return isDescending ? order > 0 : order < 0;
    };
    const auto settle = [&] {
        if (isSorted) std::ranges::stable_sort(added, before);
        std::size_t place = 0;
        for (const Plain& row : added) {
            while (place < plain.size() && !(isSorted && before(row, plain[place])))
                ++place;
            plain.insert(plain.begin() + static_cast<std::ptrdiff_t>(place++), row);
        }
        added.clear();
    };
    // Texts with a common prefix: some are prefixes of others, and many are equal.
    const auto anyText = [&] {
        base::Text text = u"Konto";
        for (unsigned bits = static_cast<unsigned>(random() % 64); bits > 1; bits /= 2)
            text += bits % 2 != 0 ? u"aŁ" : u"Ła";  // the low bytes alone sort the other way
        return text;
    };
    const auto expectRow = [&](std::size_t place) {
        ListItem item = list.ListItems(u"k:" + base::decimal(plain[place].tag));
        ASSERT_EQ(item.Index(), static_cast<int>(place) + 1);
        ASSERT_EQ(item.Tag(), base::Value(plain[place].tag));
        for (const int column : {0, 1})
            ASSERT_EQ(list.cellAt(place, column), plain[place].texts[static_cast<std::size_t>(column)]);
    };
    for (int step = 0; step < 8000; ++step) {
        const auto what = random() % 16;
        if (what < 3) {
            settle();
            if (what == 0) isDescending = !isDescending;
            if (what == 1) key = 1 - key;
            if (what == 2) isSorted = random() % 4 != 0;
            if (isSorted) std::ranges::stable_sort(plain, before);
            list.setSortOrder(isDescending ? ListView::Order::Descending : ListView::Order::Ascending);
            list.setSortKey(static_cast<std::int16_t>(key));
            if (what == 2) list.setSorted(isSorted);
        } else if (what < 5 && !plain.empty()) {
            const bool isRead = !added.empty() || step % 2 == 0;  // otherwise sorting may still be pending
            settle();
            const std::size_t place = random() % plain.size();
            if (isRead) expectRow(place);
            ListItem item = list.ListItems(u"k:" + base::decimal(plain[place].tag));
            plain[place].texts[what - 3] = anyText();  // moves no row
            item.setText(plain[place].texts[0]);
            item.setSubItems(1, plain[place].texts[1]);
        } else if (step % 500 == 499) {
            list.clearRows();
            plain.clear();
            added.clear();
        } else {
            added.push_back({{anyText(), anyText()}, step});
            ListItem item = add(added.back().texts[0], added.back().texts[1]);
            item.setTag(step);
            item.setKey(u"k:" + base::decimal(step));
        }
    }
    settle();
    ASSERT_EQ(list.rowCount(), static_cast<int>(plain.size()));
    std::multiset<base::Text> visited, present;
    list.visitCells(0, [&visited](base::TextView text) { visited.emplace(text); });
    for (std::size_t place = 0; place < plain.size(); ++place) {
        expectRow(place);
        present.insert(plain[place].texts[0]);
    }
    ASSERT_EQ(visited, present);
}

TEST_F(ListViewTest, itemClickIsRaisedOnceForEachSelectionByTheUserAndNeverByCode) {
    addAll({u"a", u"b", u"c"});
    EXPECT_FALSE(list.SelectedItem()) << "no row is selected at first";
    list.userClickedSelectedRow();
    list.ListItems(2).Select();
    EXPECT_TRUE(list.ListItems(2).Selected());
    EXPECT_THAT(clicks, IsEmpty());

    list.userSelectedRow(2);
    list.userSelectedRow(2);
    EXPECT_THAT(clicks, ElementsAre("c")) << "the same selection reported twice";
    list.userClickedSelectedRow();
    EXPECT_THAT(clicks, ElementsAre("c", "c"));
    list.userEmptiedSelection();
    EXPECT_EQ(list.SelectedItem()->Text(), u"c") << "the user cannot empty the selection";
    list.userSelectedRow(3);
    EXPECT_EQ(clicks.size(), 2U) << "no such row";

    list.addColumn(u"Name", 100);
    list.onColumnClick = [this](const ColumnHeader& header) { clicks.push_back(base::toUtf8(header.Text())); };
    list.userClickedColumn(1);
    EXPECT_EQ(clicks.back(), "Name");
    list.setEnabled(false);
    list.userClickedColumn(1);
    EXPECT_EQ(clicks.size(), 3U);
    list.userSelectedRow(1);
    EXPECT_EQ(list.SelectedItem()->Text(), u"c");
    list.clearRows();
    EXPECT_FALSE(list.SelectedItem());
    EXPECT_FALSE(list.selectedPlace());
}

TEST_F(ListViewTest, thePeerShowsEachNewSelectionOnceAndAgainAfterTheUserEmptiedIt) {
    struct RowPeer : test::SilentPeer {
        RowPeer(ListView& list, test::Log& log) : list_(list), log_(log) {}
        void show(Property property) override {
            if (property != Property::Selection) return;
            const auto place = list_.selectedPlace();
            log_.push_back(place ? "selected " + std::to_string(*place) : "selected none");
        }
        void ensureVisible(std::size_t place) override { log_.push_back("visible " + std::to_string(place)); }
        ListView& list_;
        test::Log& log_;
    } peer(list, log);
    addAll({u"a", u"b"});
    list.attachPeer(peer);
    EXPECT_EQ(list.hWnd(), 11U);
    list.ListItems(2).Select();
    list.ListItems(2).Select();
    list.ListItems(2).EnsureVisible();
    list.userSelectedRow(0);
    list.userEmptiedSelection();
    list.setSortOrder(ListView::Order::Descending);
    list.setSorted(true);
    list.clearRows();
    EXPECT_THAT(log, ElementsAre("selected 1", "visible 1", "selected 0", "selected 1", "selected none"));
}

TEST_F(ListViewTest, typingFindsTheNextRowThatBeginsWithTheLetters) {
    addAll({u"Adam", u"Berta", u"adele", u"Ber", u"B"});
    struct Case {
        std::size_t start;
        base::TextView prefix;
        bool wrap;
        std::optional<std::size_t> found;
    };
    for (const Case& c : {Case{0, u"AD", false, 0},
                          {1, u"ad", false, 2},
                          {3, u"ad", false, std::nullopt},
                          {3, u"ad", true, 0},
                          {4, u"ber", true, 1},
                          {1, u"berta", true, 1},
                          {0, u"bertas", true, std::nullopt},
                          {2, u"", false, 2},
                          {9, u"b", true, 1},
                          {9, u"b", false, std::nullopt}}) {
        EXPECT_EQ(list.findPrefix(c.start, c.prefix, c.wrap), c.found) << test::shown(c.prefix) << " from " << c.start;
    }
    list.clearRows();
    EXPECT_FALSE(list.findPrefix(0, u"a", true));
}

}  // namespace
}  // namespace forms
