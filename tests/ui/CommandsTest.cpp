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
    CommandsTest() { reopen(); }

    /// The account window on its three accounts, as at the start.
    void reopen(bool isSortedByPathDescending = false) {
        if (objBenKto) window.userClosed();
        tool.database.clear();
        addAccounts();
        tool.openAccountWindow();
        if (isSortedByPathDescending && !window.lvwBenKto.Sorted()) window.lvwBenKto.userClickedColumn(2);
        tool.log.clear();
    }
    void goTo(base::TextView key) {
        window.lvwBenKto.ListItems(key).Select();
        window.lvwBenKto.userClickedSelectedRow();
    }
    void edit(base::TextView name, base::TextView path) {
        window.txtUserNameDexo.userTyped(name);
        window.txtPathGlobal.userTyped(path);
    }
    void answerBoxesWith(Answer answer) { tool.services.messageBoxes.answer = answer; }
    test::Log boxes() const {
        test::Log texts;
        std::copy_if(tool.log.begin(), tool.log.end(), std::back_inserter(texts),
                     [](const std::string& entry) { return entry.starts_with("box "); });
        return texts;
    }
    test::Log names() const {
        test::Log names;
        for (const auto& row : tool.database.rows())
            names.push_back(test::shown(std::get<base::Text>(row[1])));
        return names;
    }

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

// New account

TEST_F(CommandsTest, newAccountModeEmptiesTheWindowAndLeavingItShowsTheFirstAccount) {
    window.lvwBenKto.userSelectedRow(2);
    edit(u"Zorn anders", u"D:\\neu");
    toggleNew();
    EXPECT_EQ(window.lvwBenKto.rowCount(), 0);
    EXPECT_FALSE(window.lvwBenKto.SelectedItem());
    EXPECT_TRUE(window.cmdGlobal.Enabled());
    EXPECT_FALSE(window.cmbResetPWD.Enabled());
    expectFields(u"", u"", 0);

    edit(u"Neu", u"C:\\N");
    expectRedSaveButton();
    answerBoxesWith(Answer::Yes);
    erase();
    toggleNew();
    expectAccount(u"Abel", u"C:\\A", 0);
    EXPECT_THAT(boxes(), IsEmpty());
    EXPECT_EQ(tool.database.rows().size(), 3U);

    tool.database.clear();
    tool.openAccountWindow();
    toggleNew();
    EXPECT_TRUE(window.txtUserNameDexo.Enabled());
    edit(u"Neu", u"C:\\N");
    toggleNew();
    expectEmpty();
    EXPECT_TRUE(window.cmbAddNew.Enabled());
}

// Saving

TEST_F(CommandsTest, aRefusedSaveTrimsTheTextsSaysWhyAndChangesNothingElse) {
    const forms::Control* const kStays = &window.cmdSpeichern;
    struct Case {
        base::Text name, path;
        const char* notice;
        const forms::Control* focus;
    };
    const char* const kNoName = "box Bitte geben Sie den Benutzernamen an. [OK] information";
    const char* const kNoPath = "box Bitte geben Sie den Datenbankpfad an. [OK] information";
    const char* const kTaken = "box Es existiert bereits ein Benutzerkonto mit dieser Bezeichnung. [OK] information";
    for (const bool isNew : {false, true}) {
        if (isNew) toggleNew();
        for (const Case& c : {Case{u"   ", u" C:\\X ", kNoName, &window.txtUserNameDexo},
                              {u"", u"", kNoName, &window.txtUserNameDexo},
                              {u" Neu ", u"  ", kNoPath, &window.txtPathGlobal},
                              {u" Meier ", u" C:\\X ", kTaken, kStays},
                              {u"mEIER", u"C:\\X", kTaken, kStays}}) {
            window.chbProgrammupdate.userClicked();
            edit(c.name, c.path);
            window.cmdSpeichern.SetFocus();
            const auto before = tool.database.rows();
            tool.log.clear();
            save();
            EXPECT_THAT(boxes(), ElementsAre(c.notice));
            EXPECT_EQ(window.ActiveControl(), c.focus);
            EXPECT_EQ(window.txtUserNameDexo.Text(), base::trimBlanks(c.name));
            EXPECT_EQ(window.txtPathGlobal.Text(), base::trimBlanks(c.path));
            EXPECT_EQ(window.cmbAddNew.Value(), isNew ? forms::CheckBox::kChecked : forms::CheckBox::kUnchecked);
            EXPECT_EQ(tool.database.rows(), before);
            expectRedSaveButton();
        }
    }
}

TEST_F(CommandsTest, aNewAccountIsAnnouncedStoredAndThenShown) {
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
    EXPECT_THAT(
        tool.log,
        ElementsAre("open rows SELECT * FROM Benutzerkonto WHERE BenKTO_Name = 'Neu' 3 1 -1", "close rows",
                    "open rows SELECT * FROM Benutzerkonto WHERE BenKTO_ID = 0 3 2 -1", "add row", "set BenKTO_Name",
                    "set BenKTO_Pass",
                    "box Das Benutzerkonto 'Neu' wurde mit folgendem Initialpasswwort angelegt:\r\n\r\nMNwelKOP"
                    "\r\n\r\nDer Anwender wird beim ersten Login aufgefordert dieses zu ändern. [OK] information",
                    "set BenKTO_R_ProgUpdate", "set BenKTO_ServerPath", "read BenKTO_ID", "update", "close rows",
                    "open rows SELECT * FROM Benutzerkonto ORDER BY BenKTO_Name 3 2 -1", "close rows", "list selection",
                    "list visible 2", "list refresh",
                    "open rows SELECT * FROM Benutzerkonto WHERE BenKTO_ID = 18 3 1 -1", "close rows", "save caption",
                    "save colour", "save bold", "save enabled", "list focus"));
    expectAccount(u"Neu", u"C:\\N", 1);
    EXPECT_EQ(window.lvwBenKto.rowCount(), 4);
    EXPECT_EQ(window.cmbAddNew.Value(), forms::CheckBox::kUnchecked);
    EXPECT_FALSE(window.cmbResetPWD.Enabled());
    const test::FakeDatabase::Row stored{18, base::Text(u"Neu"), kInitial, base::Text(u"C:\\N\\"), true};
    EXPECT_EQ(tool.database.rows().back(), stored);
    toggleNew();
    EXPECT_EQ(window.lvwBenKto.rowCount(), 0) << "the button works again";
}

TEST_F(CommandsTest, aChangedAccountIsStoredAndStaysSelectedHoweverTheListIsSorted) {
    struct Case {
        bool isSorted;
        base::Text name, path, shown;
        int index;  ///< index of its row afterwards
    };
    for (const Case& c : {Case{false, u"Abel", u"C:\\neu\\", u"C:\\neu", 1},
                          {false, u"Zz", u"C:\\A", u"C:\\A", 3},
                          {true, u"abel", u"C:\\N", u"C:\\N", 2},
                          {true, u"Abel", u"E:", u"E:", 1}}) {
        reopen(c.isSorted);
        goTo(u"BenKto:3");
        edit(c.name, c.path);
        saveByKey();
        expectAccount(c.name, c.shown, 0);
        EXPECT_EQ(window.lvwBenKto.SelectedItem()->Index(), c.index);
        EXPECT_TRUE(window.lvwBenKto.hasFocus());
        EXPECT_THAT(boxes(), IsEmpty());
        const test::FakeDatabase::Row stored{3, c.name, kInitial, c.path, false};
        EXPECT_THAT(tool.database.rows(), testing::AllOf(Contains(stored), testing::SizeIs(3)));
    }
}

TEST_F(CommandsTest, onlyCtrlSAloneSavesAndOnlyAChangedAccount) {
    for (const auto& [key, shift, isChanged] : std::initializer_list<std::tuple<int, int, bool>>{{83, 2, true},
                                                                                                 {83, 2, false},
                                                                                                 {83, 0, true},
                                                                                                 {83, 3, true},
                                                                                                 {83, 6, true},
                                                                                                 {83, 7, true},
                                                                                                 {115, 2, true},
                                                                                                 {13, 2, true}}) {
        reopen();
        if (isChanged) window.txtPathGlobal.userTyped(u"C:\\A neu");
        window.userPressedKey(static_cast<std::int16_t>(key), static_cast<std::int16_t>(shift));
        EXPECT_EQ(std::count(tool.log.begin(), tool.log.end(), "update"), key == 83 && shift == 2 && isChanged ? 1 : 0)
            << "key " << key << " shift " << shift;
    }
}

// Deleting and resetting

TEST_F(CommandsTest, deletingAsksAndThenShowsTheFirstRow) {
    struct Case {
        bool isSorted;
        Answer answer;
        base::Text shown;
    };
    for (const Case& c :
         {Case{false, Answer::No, u"Meier"}, {false, Answer::Yes, u"Abel"}, {true, Answer::Yes, u"Zorn"}}) {
        reopen(c.isSorted);
        goTo(u"BenKto:8");
        window.txtPathGlobal.userTyped(u"ungespeichert");
        answerBoxesWith(c.answer);
        tool.log.clear();
        erase();
        EXPECT_THAT(boxes(),
                    ElementsAre("box Soll das Benutzerkonto 'Meier' jetzt gelöscht werden? [Yes/No] question"));
        EXPECT_EQ(window.lvwBenKto.SelectedItem()->Text(), c.shown);
        EXPECT_EQ(window.txtUserNameDexo.Text(), c.shown);
        const bool isDeleted = c.answer == Answer::Yes;
        EXPECT_EQ(tool.log.size() > 1 && tool.log[1] == "execute DELETE FROM Benutzerkonto WHERE BenKTO_ID = 8",
                  isDeleted);
        EXPECT_EQ(tool.database.rows().size(), isDeleted ? 2U : 3U);
        EXPECT_EQ(window.cmdSpeichern.Enabled(), !isDeleted);
    }
}

TEST_F(CommandsTest, deletingTheLastAccountLocksTheWindowAndItsCommandsDoNothing) {
    answerBoxesWith(Answer::Yes);
    for (int i = 0; i < 3; ++i)
        erase();
    EXPECT_THAT(tool.database.rows(), IsEmpty());
    expectEmpty();
    EXPECT_TRUE(window.cmbAddNew.Enabled());
    tool.log.clear();
    erase();
    reset();
    EXPECT_THAT(tool.log, IsEmpty());
}

TEST_F(CommandsTest, resettingAPasswordAsksSaysTheNewOneAndLoadsTheAccountAfresh) {
    window.lvwBenKto.userSelectedRow(1);
    window.txtPathGlobal.userTyped(u"ungespeichert");
    window.cmbResetPWD.SetFocus();
    const std::string question = "box Soll das Passwort für 'Meier' jetzt zurückgesetzt werden? [Yes/No] question";
    const auto before = tool.database.rows();

    answerBoxesWith(Answer::No);
    tool.log.clear();
    window.userPressedEnter();
    EXPECT_THAT(tool.log, ElementsAre(question));
    EXPECT_EQ(tool.database.rows(), before);
    expectRedSaveButton();

    answerBoxesWith(Answer::Yes);
    tool.log.clear();
    window.userPressedEnter();
    EXPECT_THAT(tool.log,
                ElementsAre(question,
                            "execute UPDATE Benutzerkonto SET BenKTO_Pass = "
                            "'a4c123b1612dd272d1371c17149d439536b3216fdaeeb975729fae923d5a4fd1'"
                            " WHERE BenKTO_ID = 8",
                            "box Das Passwort für 'Meier' wurde auf folgendes Initialpasswwort "
                            "zurückgesetzt:\r\n\r\nMNwelKOP\r\n\r\nDer Anwender wird beim ersten Login "
                            "aufgefordert dieses zu ändern. [OK] information",
                            "open rows SELECT * FROM Benutzerkonto WHERE BenKTO_ID = 8 3 1 -1", "close rows"));
    EXPECT_EQ(tool.database.rows().back()[2], base::Value(kInitial));
    expectAccount(u"Meier", u"C:\\M", 0);
    EXPECT_FALSE(window.cmbResetPWD.Enabled());

    tool.log.clear();
    for (int i = 0; i < 4; ++i)
        window.userPressedEnter();
    EXPECT_TRUE(window.lvwBenKto.hasFocus());
    EXPECT_THAT(tool.log, IsEmpty()) << "Enter meant for a box that has gone";
}

// Folder and sorting

TEST_F(CommandsTest, aChosenFolderIsTheWholePathAndAnEmptyOneChangesNothing) {
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

TEST_F(CommandsTest, sortingLeavesSelectionAndFieldsAlone) {
    edit(u"Abel anders", u"Z:");
    for (const int column : {1, 2, 2, 1}) {
        window.lvwBenKto.userClickedColumn(column);
        EXPECT_EQ(window.lvwBenKto.SelectedItem()->Text(), u"Abel");
        EXPECT_EQ(window.txtUserNameDexo.Text(), u"Abel anders");
        expectRedSaveButton();
    }
    EXPECT_THAT(tool.log, IsEmpty()) << "nothing is read";
}

// All commands

TEST_F(CommandsTest, afterEveryCommandTheNextEditMarksTheAccountAgain) {
    answerBoxesWith(Answer::Yes);
    const auto enterAndLeave = [this] {
        toggleNew();
        toggleNew();
    };
    for (const auto& command : {saveByKey, erase, reset, {enterAndLeave}, saveNew, toggleNew}) {
        reopen();
        window.lvwBenKto.userSelectedRow(1);
        edit(u"Meier", u"C:\\anders");
        command();
        expectCleanSaveButton();
        window.chbProgrammupdate.userClicked();
        expectRedSaveButton();
    }
}

TEST_F(CommandsTest, whileABoxIsOpenTheWindowIgnoresEverythingThatComesFromOutside) {
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
    EXPECT_EQ(shownCount, 5) << "resetting shows two";
    EXPECT_THAT(names(), ElementsAre("Abel", "Meier", "Neu"));
    window.userClosed();
    EXPECT_FALSE(window.isLoaded());
}

TEST_F(CommandsTest, aFailingCommandPassesItsErrorOnAndWritesNothing) {
    struct Case {
        base::Text name;
        std::string lockedFrom;
        std::function<void()> command;
        std::int32_t error;
    };
    edit(u"Abel", u"C:\\neu");
    window.lvwBenKto.setSelectedItem(std::nullopt);
    EXPECT_EQ(errorOf(save), 91) << "no row is selected";
    EXPECT_THAT(tool.log, IsEmpty());

    answerBoxesWith(Answer::Yes);
    window.lvwBenKto.userSelectedRow(1);
    const auto before = tool.database.rows();
    for (const Case& c : {Case{u"O'Neil", "never", save, test::FakeDatabase::kSyntaxError},
                          {u"Neu", "update", save, test::FakeDatabase::kLocked},
                          {u"Neu", "execute", erase, test::FakeDatabase::kLocked},
                          {u"Neu", "execute", reset, test::FakeDatabase::kLocked},
                          // A locked file is met before the new account is announced.
                          {u"Neu", "add row", saveNew, test::FakeDatabase::kLocked}}) {
        window.txtUserNameDexo.userTyped(c.name);
        tool.database.lockedFrom = c.lockedFrom;
        tool.log.clear();
        EXPECT_EQ(errorOf(c.command), c.error);
        EXPECT_EQ(tool.database.rows(), before);
        EXPECT_THAT(boxes(), testing::Not(Contains(testing::StartsWith("box Das"))));
    }
}

}  // namespace
}  // namespace tolv
