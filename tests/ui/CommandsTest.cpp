#include "tests/support/Expect.h"
#include "tests/ui/AccountWindow.h"

namespace tolv {
namespace {

using test::errorOf;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using Answer = platform::MessageBoxes::Answer;

constexpr std::int16_t kCtrl = forms::Form::kCtrlMask;

class CommandsTest : public AccountWindow {
protected:
    CommandsTest() {
        addAccounts();
        tool.openAccountWindow();
        tool.log.clear();
    }
    void edit(base::TextView name, base::TextView path) {
        window.txtUserNameDexo.userTyped(name);
        window.txtPathGlobal.userTyped(path);
    }
    void answerBoxesWith(Answer answer) { tool.services.messageBoxes.answer = answer; }

    const std::function<void()> save = [this] { window.cmdSpeichern.userClicked(); };
    const std::function<void()> saveByKey = [this] { window.userPressedKey(u'S', kCtrl); };
    const std::function<void()> erase = [this] { window.cmdDel.userClicked(); };
    const std::function<void()> reset = [this] { window.cmbResetPWD.userClicked(); };
    const std::function<void()> toggleNew = [this] { window.cmbAddNew.userClicked(); };
    const std::function<void()> saveNew = [this] {
        window.cmbAddNew.userClicked();
        edit(u"Neu", u"C:\\N");
        window.cmdSpeichern.userClicked();
    };
};

TEST_F(CommandsTest, aNewAccountIsAnnouncedStoredAndThenShownInThisOrder) {
    toggleNew();
    edit(u" Neu ", u" C:\\N\\ ");
    window.chbProgrammupdate.userClicked();
    tool.log.clear();
    Recorder list(u"list", tool.log);
    Recorder button(u"save", tool.log);
    window.lvwBenKto.attachPeer(list);
    window.cmdSpeichern.attachPeer(button);
    save();
    window.lvwBenKto.detachPeer();
    window.cmdSpeichern.detachPeer();
    EXPECT_THAT(tool.log, ElementsAre("open rows SELECT * FROM Benutzerkonto WHERE BenKTO_Name = 'Neu' 3 1 -1",
                                      "close rows", "open rows SELECT * FROM Benutzerkonto WHERE BenKTO_ID = 0 3 2 -1",
                                      "add row", "set BenKTO_Name", "set BenKTO_Pass",
                                      "box Das Benutzerkonto 'Neu' wurde mit folgendem Initialpasswwort angelegt:" +
                                          kNotice + " [OK] information",
                                      "set BenKTO_R_ProgUpdate", "set BenKTO_ServerPath", "read BenKTO_ID", "update",
                                      "close rows", "open rows SELECT * FROM Benutzerkonto ORDER BY BenKTO_Name 3 2 -1",
                                      "close rows", "list selection visible 2 refresh",
                                      "open rows SELECT * FROM Benutzerkonto WHERE BenKTO_ID = 18 3 1 -1", "close rows",
                                      "save caption colour bold enabled", "list focus"));
}

TEST_F(CommandsTest, aChosenFolderReplacesThePathAndAnEmptyOneChangesNothing) {
    struct Case {
        bool confirmed;
        base::Text fromShell, path;
    };
    for (const Case& c : {Case{true, base::Text(u"D:\\Büro\0Rest", 12), u"D:\\Büro"},
                          {true, base::Text(u"D:\\\0", 4), u"D:\\"},
                          {false, base::Text(u"D:\\Büro\0", 8), u"C:\\A"},
                          {true, base::Text(u"\0", 1), u"C:\\A"},
                          {true, u"", u"C:\\A"},
                          {true, base::Text(u"C:\\A\0", 5), u"C:\\A"}}) {
        window.lvwBenKto.userClickedSelectedRow();
        tool.services.folderChooser.confirmed = c.confirmed;
        tool.services.folderChooser.path = c.fromShell;
        tool.log.clear();
        window.cmdGlobal.userClicked();
        EXPECT_THAT(tool.log, ElementsAre("choose folder for window 0: Ordner für globale Dokumente"));
        EXPECT_EQ(window.txtPathGlobal.Text(), c.path);
        EXPECT_EQ(window.cmdSpeichern.Enabled(), c.path != u"C:\\A");
    }
    Recorder form(u"form", tool.log);
    static_cast<forms::Form&>(window).attachPeer(form);
    tool.log.clear();
    window.cmdGlobal.userClicked();
    window.GivePathName();
    static_cast<forms::Form&>(window).detachPeer();
    EXPECT_THAT(tool.log, ElementsAre("choose folder for window 77: Ordner für globale Dokumente",
                                      "choose folder for window 0: Wählen Sie einen Ordner aus"));
}

TEST_F(CommandsTest, theWindowIgnoresAllInputWhileABoxIsOpen) {
    int shownCount = 0;
    const auto interfere = [&] {
        if (++shownCount > 5) return;
        const std::size_t asked = tool.log.size();
        saveByKey();
        edit(u"x", u"x");
        window.chbProgrammupdate.userClicked();
        window.lvwBenKto.userSelectedRow(1);
        window.lvwBenKto.userClickedSelectedRow();
        window.lvwBenKto.userClickedColumn(2);
        for (forms::CommandButton* button : {&window.cmdDel, &window.cmbResetPWD, &window.cmdGlobal})
            button->userClicked();
        toggleNew();
        window.userPressedEscape();
        window.userClosed();
        EXPECT_TRUE(window.isLoaded());
        EXPECT_EQ(tool.log.size(), asked) << "nothing is read, written, asked or closed";
    };
    tool.services.messageBoxes.whileShown = interfere;
    tool.services.folderChooser.whileShown = interfere;
    tool.services.folderChooser.confirmed = false;
    answerBoxesWith(Answer::Yes);
    window.lvwBenKto.userSelectedRow(2);
    window.cmdGlobal.userClicked();
    reset();
    erase();
    saveNew();
    EXPECT_EQ(shownCount, 5) << "resetting a password shows two boxes";
    const auto named = [](base::TextView name) { return Contains(base::Value(base::Text(name))); };
    EXPECT_THAT(tool.database.rows(), ElementsAre(named(u"Abel"), named(u"Meier"), named(u"Neu")));
    window.userClosed();
    EXPECT_FALSE(window.isLoaded());
}

TEST_F(CommandsTest, aFailingCommandPassesItsErrorOnAndWritesNothing) {
    edit(u"Abel", u"C:\\neu");
    window.lvwBenKto.setSelectedItem(std::nullopt);
    EXPECT_EQ(errorOf(save), 91) << "no row is selected";
    EXPECT_THAT(tool.log, IsEmpty());

    answerBoxesWith(Answer::Yes);
    window.lvwBenKto.userSelectedRow(1);
    const auto before = tool.database.rows();
    for (const auto& [failingCall, command] :
         {std::pair("execute", erase), {"execute", reset}, {"add row", saveNew}}) {  // fails before it is announced
        tool.database.failingCall = failingCall;
        tool.log.clear();
        EXPECT_EQ(errorOf(command), test::FakeDatabase::kLocked);
        EXPECT_EQ(tool.database.rows(), before);
        EXPECT_THAT(boxes(), testing::Not(Contains(testing::StartsWith("box Das"))));
    }
}

}  // namespace
}  // namespace tolv
