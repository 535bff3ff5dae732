#include <gmock/gmock.h>

#include "accounts/AccountTable.h"
#include "accounts/cBenutzerkonten.h"
#include "tests/support/Expect.h"
#include "tests/support/Tool.h"

namespace tolv {
namespace {

using test::errorOf;
using testing::Contains;
using testing::ElementsAre;

const base::Text kInitial(accountTable::kStoredInitialPassword);

class cBenutzerkontenTest : public testing::Test {
protected:
    cBenutzerkontenTest() { CreateSharedObjects(); }

    test::Tool tool;
    frmBenKto& window = tool.window();
};

TEST_F(cBenutzerkontenTest, theListShowsAllAccountsSelectsNoneAndGetsTheWidthsOfItsColumns) {
    tool.database.add(17, u"Zorn", u"D:\\Z\\");
    tool.database.add(3, u"Abel");
    tool.database.add(4, base::Null{}, base::Null{});
    tool.log.clear();
    objBenKto->ShowBenKto(window.lvwBenKto);
    EXPECT_THAT(tool.log,
                ElementsAre("open rows SELECT * FROM Benutzerkonto ORDER BY BenKTO_Name 3 2 -1", "close rows"));
    EXPECT_FALSE(window.lvwBenKto.SelectedItem());
    EXPECT_EQ(window.lvwBenKto.rowCount(), 3);
    EXPECT_EQ(window.lvwBenKto.cellAt(0, 0).size() + window.lvwBenKto.cellAt(0, 1).size(), 0U) << "null is empty";
    EXPECT_EQ(window.lvwBenKto.ListItems(u"BenKto:17").Tag(), base::Value(17));
    tool.database.clear();
    objBenKto->ShowBenKto(window.lvwBenKto);
    EXPECT_EQ(window.lvwBenKto.rowCount(), 0);
    EXPECT_EQ(tool.services.windowMessages.sent.size(), 4U) << "a width for each column, even in an empty list";
}

TEST_F(cBenutzerkontenTest, aCheckBoxIsCheckedOnlyForTrueAndMinusOne) {
    const std::vector<base::Value> on{true,
                                      std::int16_t{-1},
                                      std::int32_t{-1},
                                      -1.0,
                                      -1.0F,
                                      base::Currency{-10'000},
                                      base::Date{-1},
                                      base::Decimal{true, 0, {1}},
                                      base::Decimal{true, 11, {1'215'752'192, 23}}};  // 10 to the power of 11
    const std::vector<base::Value> off{false,
                                       base::Null{},
                                       std::int16_t{1},
                                       std::int32_t{1},
                                       std::uint8_t{255},
                                       -1.5,
                                       base::Currency{-1},
                                       base::Date{-1.25},
                                       base::Decimal{true, 1, {11}},
                                       base::Decimal{false, 0, {1}},
                                       base::Decimal{true, 0, {1, 1}},
                                       base::Text(u"x")};
    for (const base::Value& value : on)
        EXPECT_EQ(cBenutzerkonten::GiveCheckBoxValueForFORM(value), 1) << value.index();
    for (const base::Value& value : off)
        EXPECT_EQ(cBenutzerkonten::GiveCheckBoxValueForFORM(value), 0) << value.index();
}

TEST_F(cBenutzerkontenTest, loadingAnAccountSetsItsFieldsAndClosesTheRowsThatItRead) {
    tool.database.add(5, u"Abel", u"C:\\A\\", base::Null{}, true);
    tool.database.add(6, base::Null{}, base::Null{}, kInitial);
    tool.log.clear();
    window.txtPathGlobal.onChange = [&] { tool.log.push_back("path " + test::shown(window.txtPathGlobal.Text())); };
    window.txtUserNameDexo.onChange = [&] { tool.log.push_back("name " + test::shown(window.txtUserNameDexo.Text())); };
    window.chbProgrammupdate.onClick = [&] { tool.log.push_back("update"); };
    objBenKto->ShowBenKtoValues(5);
    EXPECT_THAT(tool.log, ElementsAre("open rows SELECT * FROM Benutzerkonto WHERE BenKTO_ID = 5 3 1 -1",
                                      "path C:\\A\\", "name Abel", "update", "path C:\\A", "close rows"));
    objBenKto->ShowBenKtoValues(6);
    EXPECT_EQ(window.txtUserNameDexo.Text(), u"");
    EXPECT_EQ(window.txtPathGlobal.Text(), u"");
    EXPECT_EQ(window.chbProgrammupdate.Value(), forms::CheckBox::kUnchecked);

    tool.log.clear();
    EXPECT_EQ(errorOf([] { objBenKto->ShowBenKtoValues(7); }), 3021) << "deleted since the list was filled";
    EXPECT_EQ(window.txtPathGlobal.Text(), u"");
    EXPECT_THAT(tool.log, testing::Not(Contains("close rows")));
}

TEST_F(cBenutzerkontenTest, aNameIsTakenIfAnotherRowHasTheNameInTheField) {
    tool.database.add(8, u"Meier");
    window.txtUserNameDexo.setText(u"meier");
    EXPECT_EQ(objBenKto->KontoSchonDa(u"Abel", 3), kTrue) << "the argument is ignored";
    EXPECT_EQ(objBenKto->KontoSchonDa(u"Abel", 8), kFalse);
    EXPECT_EQ(tool.log.back(), "close rows");
    window.txtUserNameDexo.setText(u" Meier");
    EXPECT_EQ(objBenKto->KontoSchonDa(u"Meier", 0), kFalse);
    window.txtUserNameDexo.setText(u"O'Neil");
    EXPECT_EQ(errorOf([] { objBenKto->KontoSchonDa(u"Abel", 0); }), test::FakeDatabase::kSyntaxError);
}

TEST_F(cBenutzerkontenTest, anAccountThatWasDeletedMeanwhileIsSavedAsANewRowWithoutPassword) {
    tool.database.add(5, u"Abel");
    tool.database.clear();
    window.txtUserNameDexo.setText(u" Berta ");
    window.txtPathGlobal.setText(u"  C:\\Daten\\ ");
    EXPECT_EQ(objBenKto->SaveBenKto(5), 6);
    EXPECT_THAT(tool.log, testing::Not(Contains(testing::StartsWith("box"))));
    const test::FakeDatabase::Row stored{6, base::Text(u" Berta "), base::Null{}, base::Text(u"C:\\Daten\\"), false};
    EXPECT_THAT(tool.database.rows(), ElementsAre(stored));
}

TEST_F(cBenutzerkontenTest, aSaveWritesNothingWhicheverOfItsCallsFails) {
    for (const std::int32_t id : {0, 5}) {
        for (const char* call : {"open rows", "add row", "set BenKTO_Name", "set BenKTO_ServerPath", "update"}) {
            if (id == 5 && call == std::string("add row")) continue;
            tool.database.clear();
            tool.database.add(5, u"Abel");
            const auto before = tool.database.rows();
            tool.database.failingCall = call;
            EXPECT_EQ(errorOf([&] { objBenKto->SaveBenKto(id); }), test::FakeDatabase::kLocked) << call;
            EXPECT_EQ(tool.database.rows(), before) << call;
        }
    }
}

}  // namespace
}  // namespace tolv
