#include "tests/support/Expect.h"
#include "tests/ui/AccountWindow.h"

namespace tolv {
namespace {

using test::errorOf;
using testing::ElementsAre;
using testing::ElementsAreArray;
using Shape = platform::MousePointer::Shape;

class frmBenKtoTest : public AccountWindow {
protected:
    std::ptrdiff_t loads() const {
        return std::count_if(tool.log.begin(), tool.log.end(), [](const std::string& entry) {
            return entry.find("WHERE BenKTO_ID") != std::string::npos;
        });
    }

    std::vector<Shape>& shapes = tool.services.mousePointer.shapes;
};

TEST_F(frmBenKtoTest, itsControlsHaveAnOrderOfDefinitionAndADifferentTabOrder) {
    std::vector<std::string> names;
    for (const forms::Control* control : window.Controls())
        names.push_back(base::toUtf8(control->Name()));
    EXPECT_THAT(names, ElementsAre("chbProgrammupdate", "Frame27", "cmbResetPWD", "txtUserNameDexo", "txtPathGlobal",
                                   "cmdGlobal", "Label1", "Label5", "cmdAbbrechen", "cmdDel", "cmbAddNew",
                                   "cmdSpeichern", "lvwBenKto", "imgList_Sort"));
    EXPECT_THAT(window.tabOrder(),
                ElementsAreArray<forms::Control*>({&window.lvwBenKto, &window.cmbAddNew, &window.txtUserNameDexo,
                                                   &window.txtPathGlobal, &window.cmdGlobal, &window.chbProgrammupdate,
                                                   &window.cmdSpeichern, &window.cmbResetPWD, &window.cmdDel,
                                                   &window.cmdAbbrechen}));
    EXPECT_EQ(window.lvwBenKto.ColumnHeaders(1).widthHimetric(), 5556);
    EXPECT_EQ(window.lvwBenKto.ColumnHeaders(2).widthHimetric(), 2540);
}

TEST_F(frmBenKtoTest, itOpensWithTheFirstAccountAndLoadsEachOnceUnderTheHourglass) {
    addAccounts();
    tool.openAccountWindow();
    expectAccount(u"Abel", u"C:\\A", 0);
    EXPECT_EQ(window.Caption(), u"Tolv-Benutzerkontenverwaltung");
    EXPECT_EQ(window.lvwBenKto.ColumnHeaderIcons(), &window.imgList_Sort);
    const auto& sent = tool.services.windowMessages.sent;
    EXPECT_EQ(std::ranges::count(sent, 4612U, &test::FakeWindowMessages::Sent::message), 2) << "a mark for each header";
    EXPECT_TRUE(window.lvwBenKto.hasFocus());
    EXPECT_EQ(loads(), 1);

    shapes.clear();
    window.lvwBenKto.userSelectedRow(2);
    EXPECT_EQ(loads(), 2);
    EXPECT_THAT(shapes, ElementsAre(Shape::Hourglass, Shape::Default));
    window.lvwBenKto.userClickedSelectedRow();
    EXPECT_EQ(loads(), 3) << "a click on the selected row reads the account again";
    window.lvwBenKto.userEmptiedSelection();
    EXPECT_EQ(loads(), 3);
    expectAccount(u"Zorn", u"D:\\Z", 1);
}

TEST_F(frmBenKtoTest, aMissingAccountRaisesAnErrorAndTheHourglassIsRemoved) {
    addAccounts();
    tool.openAccountWindow();
    tool.database.clear();
    EXPECT_EQ(errorOf([&] { window.lvwBenKto.userSelectedRow(1); }), 3021);
    EXPECT_EQ(shapes.back(), Shape::Default);
    EXPECT_EQ(window.txtUserNameDexo.Text(), u"Abel");

    shapes.clear();
    window.lvwBenKto.ListItems(3).setTag(base::Text(u"keine Zahl"));
    EXPECT_EQ(errorOf([&] { window.lvwBenKto.userSelectedRow(2); }), 13);
    EXPECT_THAT(shapes, ElementsAre(Shape::Hourglass, Shape::Default));
}

TEST_F(frmBenKtoTest, everyWayToCloseReleasesTheAccountFileAndAsksNothing) {
    const std::vector<std::function<void()>> ways{[&] { window.cmdAbbrechen.userClicked(); },
                                                  [&] { window.userPressedEscape(); }, [&] { window.userClosed(); }};
    for (const auto& way : ways) {
        tool.openAccountWindow();
        window.txtUserNameDexo.userTyped(u"ungespeichert");
        tool.log.clear();
        way();
        EXPECT_THAT(tool.log, ElementsAre("close connection", "connection released", "FSO gone", "unloaded frmBenKto"));
    }
}

}  // namespace
}  // namespace tolv
