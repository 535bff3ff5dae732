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

TEST(AccountTableTest, statementsAreConcatenatedExactly) {
    EXPECT_EQ(accountTable::selectByName(u"O'Neil "), u"SELECT * FROM Benutzerkonto WHERE BenKTO_Name = 'O'Neil '");
    EXPECT_EQ(accountTable::selectOthersByName(u"Meier", 17),
              u"SELECT * FROM Benutzerkonto WHERE BenKTO_Name = 'Meier' AND NOT BenKTO_ID = 17");
    EXPECT_EQ(accountTable::selectById(-3), u"SELECT * FROM Benutzerkonto WHERE BenKTO_ID = -3");
    EXPECT_EQ(accountTable::selectAll(), u"SELECT * FROM Benutzerkonto ORDER BY BenKTO_Name");
    EXPECT_EQ(accountTable::updateToInitialPassword(u"17"),
              u"UPDATE Benutzerkonto SET BenKTO_Pass = "
              u"'a4c123b1612dd272d1371c17149d439536b3216fdaeeb975729fae923d5a4fd1' WHERE BenKTO_ID = 17");
    EXPECT_EQ(accountTable::deleteById(u"17"), u"DELETE FROM Benutzerkonto WHERE BenKTO_ID = 17");
    EXPECT_EQ(accountTable::listKey(2147483647), u"BenKto:2147483647");
    EXPECT_EQ(accountTable::kDatabasePassword, kAdministratorPassword) << "one value in two rooms";
}

class cBenutzerkontenTest : public testing::Test {
protected:
    cBenutzerkontenTest() { CreateSharedObjects(); }

    test::Tool tool;
    frmBenKto& window = tool.window();
};

TEST_F(cBenutzerkontenTest, theListShowsAllAccountsInTheDatabasesOrderAndSelectsNone) {
    tool.database.add(17, u"Zorn", u"D:\\Z\\");
    tool.database.add(3, u"Abel");
    tool.database.add(4, u"x").at(1) = base::Null{};
    tool.database.rows.back().at(3) = base::Null{};
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
    tool.database.rows.clear();
    objBenKto->ShowBenKto(window.lvwBenKto);
    EXPECT_EQ(window.lvwBenKto.rowCount(), 0);
    EXPECT_EQ(tool.services.windowMessages.sent.size(), 2U) << "widths are set on an empty list, too";
}

TEST_F(cBenutzerkontenTest, exactlyOneBackslashAtTheEndOfAPathIsNotShown) {
    struct Case {
        base::Value stored;
        base::Text shown;
    };
    for (const Case& c : {Case{base::Text(u"C:\\Daten\\"), u"C:\\Daten"},
                          {base::Text(u"C:\\Daten"), u"C:\\Daten"},
                          {base::Text(u"C:\\"), u"C:"},
                          {base::Text(u"\\"), u""},
                          {base::Text(u"C:\\Daten\\\\"), u"C:\\Daten\\"},
                          {base::Text(u" C:\\ "), u" C:\\ "},
                          {base::Text(), u""},
                          {base::Null{}, u""}}) {
        tool.database.rows.clear();
        tool.database.add(5, u"Abel").at(3) = c.stored;
        objBenKto->ShowBenKtoValues(5);
        EXPECT_EQ(window.txtPathGlobal.Text(), c.shown);
    }
}

TEST_F(cBenutzerkontenTest, thePasswordCanBeResetUnlessItIsTheInitialOneToTheLetter) {
    base::Text inCapitals = kInitial;
    inCapitals[0] = u'A';
    struct Case {
        base::Value stored;
        bool canBeReset;
    };
    for (const Case& c : {Case{kInitial, false},
                          {inCapitals, true},
                          {kInitial + u" ", true},
                          {base::Text(), true},
                          {base::Null{}, true},
                          {kInitial, false}}) {
        tool.database.rows.clear();
        tool.database.add(5, u"Abel", u"C:", c.stored);
        objBenKto->ShowBenKtoValues(5);
        EXPECT_EQ(window.cmbResetPWD.Enabled(), c.canBeReset);
    }
}

TEST_F(cBenutzerkontenTest, aCheckBoxIsOnForTrueAlone) {
    struct Case {
        base::Value stored;
        std::int16_t value;
    };
    for (const Case& c : {Case{true, 1},
                          {false, 0},
                          {base::Null{}, 0},
                          {std::int16_t{-1}, 1},
                          {std::int32_t{-1}, 1},
                          {std::int16_t{1}, 0},
                          {std::int32_t{1}, 0},
                          {std::uint8_t{255}, 0},
                          {-1.0, 1},
                          {-1.5, 0},
                          {base::Text(u"x"), 0}}) {
        EXPECT_EQ(cBenutzerkonten::GiveCheckBoxValueForFORM(c.stored), c.value) << c.stored.index();
    }
}

TEST_F(cBenutzerkontenTest, loadingAnAccountSetsItsFieldsAndClosesTheRowsThatItRead) {
    tool.database.add(5, u"Abel", u"C:\\A\\", base::Null{}, true);
    tool.database.add(6, u"Beyer", u"C:\\B", kInitial).at(1) = base::Null{};
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

}  // namespace
}  // namespace tolv
