#include <gmock/gmock.h>

#include "app/frmLogin.h"
#include "db/cDB.h"
#include "tests/support/Expect.h"
#include "tests/support/Tool.h"

namespace tolv {
namespace {

using test::errorOf;
using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;

const char* const kWrongPassword = "box Falsches Passwort. [OK] critical";

class MainTest : public testing::Test {
protected:
    /// Runs Main; this user acts at the login dialog.
    void runMain(std::function<void(frmLogin&)> user) {
        tool.host.modalScript = [user = std::move(user)](forms::Form& form) { user(dynamic_cast<frmLogin&>(form)); };
        Main();
    }
    static void signIn(frmLogin& dialog) {
        dialog.txtPasswort.userTyped(kAdministratorPassword);
        dialog.userPressedEnter();
    }

    test::Tool tool;
};

TEST_F(MainTest, theAccountFileIsOpenFromTheLoginToTheEndOfTheAccountWindow) {
    tool.database.add(3, u"Abel");
    LoginOK = kTrue;  // as left by an earlier run
    runMain([this](frmLogin& dialog) {
        EXPECT_EQ(LoginOK, kFalse);
        EXPECT_TRUE(dialog.txtPasswort.hasFocus());
        signIn(dialog);
        EXPECT_EQ(LoginOK, -1);
        EXPECT_FALSE(objFSO || objINI || objDB || objBenKto || objForm) << "created only after the dialog has returned";
        tool.log.push_back("signed in");
    });
    EXPECT_THAT(tool.log,
                ElementsAre("load frmLogin", "FSO made", "FSO gone", "showModal frmLogin", "unloaded frmLogin",
                            "signed in", "FSO made", "provider Microsoft.Jet.OLEDB.4.0", "read setting BenKtoPath",
                            "open C:\\Programm\\BenKTO.mdb HwendorpliqZ '' -1", "load frmBenKto",
                            "open rows SELECT * FROM Benutzerkonto ORDER BY BenKTO_Name 3 2 -1", "close rows",
                            "open rows SELECT * FROM Benutzerkonto WHERE BenKTO_ID = 3 3 1 -1", "close rows",
                            "show frmBenKto"));
    EXPECT_TRUE(objFSO && objINI && objDB && objBenKto && objForm);
    EXPECT_EQ(objDB->Connection().State(), ado::adStateOpen);

    tool.log.clear();
    tool.window().userClosed();
    EXPECT_THAT(tool.log, ElementsAre("close connection", "connection released", "FSO gone", "unloaded frmBenKto"));
    EXPECT_FALSE(objFSO || objINI || objDB || objBenKto || objForm);
    ReleaseSharedObjects();
}

TEST_F(MainTest, everyWayToCancelEndsWithoutAMessageAndWithoutTheAccountFile) {
    const std::vector<std::function<void(frmLogin&)>> ways{
        [](frmLogin& dialog) { dialog.cmdAbbrechen.userClicked(); },
        [](frmLogin& dialog) { dialog.userPressedEscape(); },
        [](frmLogin& dialog) { dialog.userClosed(); },
        [](frmLogin& dialog) {
            dialog.txtPasswort.userTyped(kAdministratorPassword);
            dialog.userPressedEscape();
        },
    };
    for (const auto& way : ways) {
        tool.log.clear();
        runMain(way);
        EXPECT_EQ(LoginOK, kFalse);
        EXPECT_THAT(tool.log,
                    ElementsAre("load frmLogin", "FSO made", "FSO gone", "showModal frmLogin", "unloaded frmLogin"));
    }
}

TEST_F(MainTest, onlyTheExactPasswordSignsInAndAWrongOneStaysInTheField) {
    frmLogin& shown = tool.application.loginDialog();
    tool.services.messageBoxes.whileShown = [&] {  // the open message box blocks the dialog
        shown.userClosed();
        shown.userPressedEscape();
    };
    for (const base::TextView wrong :
         {u"", u"hwendorpliqz", u" HwendorpliqZ", u"HwendorpliqZ ", u"HwendorpliqZ\u200B"}) {
        tool.log.clear();
        runMain([&](frmLogin& dialog) {
            dialog.txtPasswort.userTyped(wrong);
            dialog.cmdLogin.userClicked();
            dialog.userPressedEnter();
            EXPECT_TRUE(dialog.isLoaded());
            EXPECT_EQ(dialog.txtPasswort.Text(), wrong);
            EXPECT_EQ(LoginOK, kFalse);
        });
        EXPECT_THAT(tool.log, ElementsAre("load frmLogin", "FSO made", "FSO gone", "showModal frmLogin", kWrongPassword,
                                          kWrongPassword, "unloaded frmLogin"));
    }
}

TEST_F(MainTest, theMarkerFileFillsInThePassword) {
    tool.services.fileSystem.files.insert(u"C:\\mmtolvblankologin");
    runMain([](frmLogin& dialog) {
        dialog.txtPasswort.userTyped(u"anders");
        dialog.userPressedEnter();
        EXPECT_EQ(LoginOK, kFalse) << "the edited text is checked, not the text filled in";
        dialog.txtPasswort.userTyped(kAdministratorPassword);
    });
    EXPECT_EQ(LoginOK, kFalse);

    tool.application.loginDialog().txtPasswort.setText(u"");
    runMain([](frmLogin& dialog) { dialog.userPressedEnter(); });
    EXPECT_EQ(LoginOK, kTrue);
}

TEST_F(MainTest, anAccountFileThatCannotBeOpenedEndsMainBeforeTheAccountWindow) {
    tool.database.failingCall = "open ";
    EXPECT_EQ(errorOf([this] { runMain(signIn); }), test::FakeDatabase::kLocked);
    EXPECT_THAT(tool.log, testing::Not(Contains("load frmBenKto")));
}

TEST_F(MainTest, theLoginDialogHasItsCaptionPasswordCharacterAndTabOrder) {
    frmLogin& dialog = tool.application.loginDialog();
    EXPECT_EQ(dialog.Caption(), u"Anmeldung");
    EXPECT_EQ(dialog.txtPasswort.PasswordChar(), u'*');
    EXPECT_THAT(dialog.tabOrder(),
                ElementsAreArray<forms::Control*>({&dialog.txtPasswort, &dialog.cmdLogin, &dialog.cmdAbbrechen}));
}

}  // namespace
}  // namespace tolv
