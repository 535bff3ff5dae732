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

TEST_F(cBenutzerkontenTest, theListShowsAllAccountsInTheDatabasesOrderAndSelectsNone) {
    tool.database.add(17, u"Zorn", u"D:\\Z\\");
    tool.database.add(3, u"Abel");
    tool.database.add(4, base::Null{}, base::Null{});
    tool.log.clear();
    for (int filling = 0; filling < 2; ++filling) {
        objBenKto->ShowBenKto(window.lvwBenKto);
        ASSERT_EQ(window.lvwBenKto.rowCount(), 3);
        std::vector<std::string> shown;
        for (int i = 1; i <= 3; ++i) {
            const forms::ListItem item = window.lvwBenKto.ListItems(i);
            shown.push_back(test::shown(item.Text()) + "|" + test::shown(item.SubItems(1)) + "|" +
                            test::shown(item.Key()) + "|" + std::to_string(std::get<std::int32_t>(item.Tag())));
        }
        EXPECT_THAT(shown, ElementsAre("||BenKto:4|4", "Abel|C:\\Daten|BenKto:3|3", "Zorn|D:\\Z\\|BenKto:17|17"));
        EXPECT_FALSE(window.lvwBenKto.SelectedItem());
        EXPECT_THAT(tool.log,
                    ElementsAre("open rows SELECT * FROM Benutzerkonto ORDER BY BenKTO_Name 3 2 -1", "close rows"));
        tool.log.clear();
        EXPECT_EQ(tool.services.windowMessages.sent.size(), 2U) << "one width message a column";
        tool.services.windowMessages.sent.clear();
    }
    tool.database.clear();
    objBenKto->ShowBenKto(window.lvwBenKto);
    EXPECT_EQ(window.lvwBenKto.rowCount(), 0);
    EXPECT_EQ(tool.services.windowMessages.sent.size(), 2U) << "widths are set on an empty list, too";
}

TEST_F(cBenutzerkontenTest, exactlyOneBackslashAtTheEndOfAPathIsNotShown) {
    for (const auto& [stored, shown] :
         std::vector<std::pair<base::Value, base::Text>>{{base::Text(u"C:\\Daten\\"), u"C:\\Daten"},
                                                         {base::Text(u"C:\\Daten"), u"C:\\Daten"},
                                                         {base::Text(u"\\"), u""},
                                                         {base::Text(u"C:\\Daten\\\\"), u"C:\\Daten\\"},
                                                         {base::Text(u" C:\\ "), u" C:\\ "},
                                                         {base::Text(), u""},
                                                         {base::Null{}, u""}}) {
        tool.database.clear();
        tool.database.add(5, u"Abel", stored);
        objBenKto->ShowBenKtoValues(5);
        EXPECT_EQ(window.txtPathGlobal.Text(), shown);
    }
}

TEST_F(cBenutzerkontenTest, thePasswordCanBeResetUnlessItIsExactlyTheInitialOne) {
    base::Text inCapitals = kInitial;
    inCapitals[0] = u'A';
    for (const base::Value& stored :
         std::vector<base::Value>{kInitial, inCapitals, kInitial + u" ", base::Text(), base::Null{}, kInitial}) {
        tool.database.clear();
        tool.database.add(5, u"Abel", u"C:", stored);
        objBenKto->ShowBenKtoValues(5);
        EXPECT_EQ(window.cmbResetPWD.Enabled(), stored != base::Value(kInitial));
    }
}

TEST_F(cBenutzerkontenTest, aCheckBoxIsOnForTrueAlone) {
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
    tool.database.add(6, base::Null{}, u"C:\\B", kInitial);
    tool.log.clear();
    window.txtPathGlobal.onChange = [&] { tool.log.push_back("path " + test::shown(window.txtPathGlobal.Text())); };
    window.txtUserNameDexo.onChange = [&] { tool.log.push_back("name " + test::shown(window.txtUserNameDexo.Text())); };
    window.chbProgrammupdate.onClick = [&] { tool.log.push_back("update"); };
    objBenKto->ShowBenKtoValues(5);
    EXPECT_THAT(tool.log, ElementsAre("open rows SELECT * FROM Benutzerkonto WHERE BenKTO_ID = 5 3 1 -1",
                                      "path C:\\A\\", "name Abel", "update", "path C:\\A", "close rows"));
    objBenKto->ShowBenKtoValues(6);
    EXPECT_EQ(window.txtUserNameDexo.Text(), u"");
    EXPECT_EQ(window.chbProgrammupdate.Value(), forms::CheckBox::kUnchecked);

    tool.log.clear();
    EXPECT_EQ(errorOf([] { objBenKto->ShowBenKtoValues(7); }), 3021) << "deleted since the list was filled";
    EXPECT_EQ(window.txtPathGlobal.Text(), u"C:\\B");
    EXPECT_THAT(tool.log, testing::Not(Contains("close rows")));
}

TEST_F(cBenutzerkontenTest, aNameIsTakenIfAnotherRowHasTheNameInTheField) {
    tool.database.add(3, u"Abel");
    tool.database.add(8, u"Meier");
    struct Case {
        base::Text field;
        std::int32_t id;
        std::int16_t answer;
        const char* condition;
    };
    for (const Case& c : {Case{u"Meier", 0, kTrue, "BenKTO_Name = 'Meier'"},
                          {u"Meier", 8, kFalse, "BenKTO_Name = 'Meier' AND NOT BenKTO_ID = 8"},
                          {u"meier", 3, kTrue, "BenKTO_Name = 'meier' AND NOT BenKTO_ID = 3"},
                          {u" Meier", 0, kFalse, "BenKTO_Name = ' Meier'"},
                          {u"", 0, kFalse, "BenKTO_Name = ''"}}) {
        window.txtUserNameDexo.setText(c.field);
        tool.log.clear();
        EXPECT_EQ(objBenKto->KontoSchonDa(u"Abel", c.id), c.answer) << "the argument is not looked at";
        EXPECT_THAT(tool.log,
                    ElementsAre("open rows SELECT * FROM Benutzerkonto WHERE " + std::string(c.condition) + " 3 1 -1",
                                "close rows"));
    }
    window.txtUserNameDexo.setText(u"O'Neil");
    EXPECT_EQ(errorOf([] { objBenKto->KontoSchonDa(u"Abel", 0); }), test::FakeDatabase::kSyntaxError);
}

TEST_F(cBenutzerkontenTest, aNewAccountIsAnnouncedWhileItsRowIsPending) {
    tool.database.add(41, u"Abel");
    window.txtUserNameDexo.setText(u" Neu ");
    window.txtPathGlobal.setText(u"  C:\\Daten\\ ");
    window.chbProgrammupdate.setValue(forms::CheckBox::kChecked);
    tool.services.messageBoxes.whileShown = [this] { EXPECT_EQ(tool.database.rows().size(), 1U); };
    EXPECT_EQ(objBenKto->SaveBenKto(0), 42);
    const test::FakeDatabase::Row stored{std::int32_t{42}, base::Text(u" Neu "), kInitial, base::Text(u"C:\\Daten\\"),
                                         true};
    EXPECT_EQ(tool.database.rows().at(1), stored);
}

TEST_F(cBenutzerkontenTest, savingAnAccountLeavesItsPasswordAndADeletedOneBecomesANewRowWithoutPassword) {
    window.txtUserNameDexo.setText(u"Berta");
    window.txtPathGlobal.setText(u"   ");
    struct Case {
        bool isDeleted;
        std::int32_t savedId;
        base::Value pass;
    };
    for (const Case& c : {Case{false, 5, base::Text(u"geheim")}, {true, 6, base::Null{}}}) {
        tool.database.clear();
        tool.database.add(5, u"Abel", u"C:", base::Text(u"geheim"), true);
        if (c.isDeleted) tool.database.clear();
        tool.log.clear();
        EXPECT_EQ(objBenKto->SaveBenKto(5), c.savedId);
        EXPECT_THAT(tool.log, testing::Not(Contains(testing::StartsWith("box"))));
        const test::FakeDatabase::Row stored{c.savedId, base::Text(u"Berta"), c.pass, base::Text(), false};
        EXPECT_THAT(tool.database.rows(), ElementsAre(stored));
    }
}

TEST_F(cBenutzerkontenTest, aSaveThatFailsWritesNothingWhicheverCallItIs) {
    for (const std::int32_t id : {0, 5}) {
        for (const char* call : {"open rows", "add row", "set BenKTO_Name", "set BenKTO_ServerPath", "update"}) {
            if (id == 5 && call == std::string("add row")) continue;
            tool.database.clear();
            tool.database.add(5, u"Abel");
            const auto before = tool.database.rows();
            tool.database.lockedFrom = call;
            EXPECT_EQ(errorOf([&] { objBenKto->SaveBenKto(id); }), test::FakeDatabase::kLocked) << call;
            EXPECT_EQ(tool.database.rows(), before) << call;
        }
    }
}

}  // namespace
}  // namespace tolv
