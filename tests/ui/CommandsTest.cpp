#include "tests/support/Expect.h"
#include "tests/ui/AccountWindow.h"

namespace tolv {
namespace {

using test::errorOf;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;
using Answer = platform::MessageBoxes::Answer;

constexpr std::int16_t kCtrl = forms::Form::kCtrlMask;

class CommandsTest : public AccountWindow {
protected:
    CommandsTest() {
        addAccounts();
        open();
    }

    void open() {
        tool.openAccountWindow();
        tool.log.clear();
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
    /// The state after the header has been clicked until the list is sorted by server path, Z to A.
    void sortByPathDescending() {
        window.lvwBenKto.userClickedColumn(2);
        ASSERT_EQ(window.lvwBenKto.SortOrder(), forms::ListView::Order::Descending);
    }
    void expectRed() const {
        EXPECT_EQ(window.cmdSpeichern.Caption(), u"Speichern (Strg+S)");
        EXPECT_TRUE(window.cmdSpeichern.Enabled());
    }

    const test::FakeDatabase::Row abel{std::int32_t{3}, base::Text(u"Abel"),
                                       base::Text(accountTable::kStoredInitialPassword), base::Text(u"C:\\A"), false};
};

// New account

TEST_F(CommandsTest, newAccountModeEmptiesTheWindowAndLeavingItShowsTheFirstAccount) {
    window.lvwBenKto.userSelectedRow(2);
    edit(u"Zorn anders", u"D:\\neu");
    window.cmbAddNew.userClicked();
    EXPECT_EQ(window.lvwBenKto.rowCount(), 0);
    EXPECT_FALSE(window.lvwBenKto.SelectedItem());
    EXPECT_TRUE(window.cmdGlobal.Enabled());
    EXPECT_FALSE(window.cmbResetPWD.Enabled());
    EXPECT_EQ(window.chbProgrammupdate.Value(), forms::CheckBox::kUnchecked);
    for (const forms::TextBox* box : {&window.txtUserNameDexo, &window.txtPathGlobal}) {
        EXPECT_EQ(box->Text(), u"");
        EXPECT_TRUE(box->Enabled());
        EXPECT_EQ(box->BackColor(), 0x80000005U);
    }
    expectCleanSaveButton();

    edit(u"Neu", u"C:\\N");
    expectRed();
    answerBoxesWith(Answer::Yes);
    window.cmdDel.userClicked();
    window.cmbAddNew.userClicked();
    expectAccount(u"Abel", u"C:\\A", 0);
    EXPECT_THAT(boxes(), IsEmpty());
    EXPECT_EQ(tool.database.rows().size(), 3U);
    window.txtUserNameDexo.userTyped(u"wieder");
    expectRed();
}

TEST_F(CommandsTest, withoutAccountsNewAccountModeLeadsBackToTheLockedWindow) {
    tool.database.clear();
    open();
    window.cmbAddNew.userClicked();
    EXPECT_TRUE(window.txtUserNameDexo.Enabled());
    edit(u"Neu", u"C:\\N");
    window.cmbAddNew.userClicked();
    expectEmpty();
    EXPECT_TRUE(window.cmbAddNew.Enabled());
}

// Saving

TEST_F(CommandsTest, aRefusedSaveTrimsTheTextsSaysWhyAndChangesNothingElse) {
    const forms::Control* const kStays = nullptr;
    struct Case {
        base::Text name, path;
        const char* notice;
        const forms::Control* focus;
    };
    const char* const kNoName = "box Bitte geben Sie den Benutzernamen an. [OK] information";
    const char* const kNoPath = "box Bitte geben Sie den Datenbankpfad an. [OK] information";
    const char* const kTaken = "box Es existiert bereits ein Benutzerkonto mit dieser Bezeichnung. [OK] information";
    for (const bool isNew : {false, true}) {
        if (isNew) window.cmbAddNew.userClicked();
        for (const Case& c : {Case{u"", u" C:\\X ", kNoName, &window.txtUserNameDexo},
                              {u"   ", u"C:\\X", kNoName, &window.txtUserNameDexo},
                              {u"", u"", kNoName, &window.txtUserNameDexo},
                              {u" Neu ", u"", kNoPath, &window.txtPathGlobal},
                              {u"Neu", u"  ", kNoPath, &window.txtPathGlobal},
                              {u" Meier ", u" C:\\X ", kTaken, kStays},
                              {u"mEIER", u"C:\\X", kTaken, kStays}}) {
            window.chbProgrammupdate.userClicked();
            edit(c.name, c.path);
            window.cmdSpeichern.SetFocus();
            const auto before = tool.database.rows();
            tool.log.clear();
            window.cmdSpeichern.userClicked();
            EXPECT_THAT(boxes(), ElementsAre(c.notice));
            EXPECT_EQ(window.ActiveControl(), c.focus != kStays ? c.focus : &window.cmdSpeichern);
            EXPECT_EQ(window.txtUserNameDexo.Text(), base::trimBlanks(c.name));
            EXPECT_EQ(window.txtPathGlobal.Text(), base::trimBlanks(c.path));
            EXPECT_EQ(window.cmbAddNew.Value(), isNew ? forms::CheckBox::kChecked : forms::CheckBox::kUnchecked);
            EXPECT_EQ(tool.database.rows(), before);
            expectRed();
        }
    }
}

TEST_F(CommandsTest, aNewAccountIsAnnouncedStoredAndThenShown) {
    window.cmbAddNew.userClicked();
    edit(u" Neu ", u" C:\\N\\ ");
    window.chbProgrammupdate.userClicked();
    tool.log.clear();
    Recorder list(u"list", tool.log);
    Recorder save(u"save", tool.log);
    window.lvwBenKto.attachPeer(list);
    window.cmdSpeichern.attachPeer(save);
    window.cmdSpeichern.userClicked();
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
    const test::FakeDatabase::Row stored{std::int32_t{18}, base::Text(u"Neu"),
                                         base::Text(accountTable::kStoredInitialPassword), base::Text(u"C:\\N\\"),
                                         true};
    EXPECT_EQ(tool.database.rows().back(), stored);
    window.cmbAddNew.userClicked();
    EXPECT_EQ(window.lvwBenKto.rowCount(), 0) << "the button works again";
}

TEST_F(CommandsTest, aChangedAccountIsStoredAndStaysSelectedHoweverTheListIsSorted) {
    struct Case {
        bool sorted;
        base::Text name, path, shown;
        int index;  ///< index of its row afterwards
    };
    for (const Case& c : {Case{false, u"Abel", u"C:\\neu\\", u"C:\\neu", 1},
                          {false, u"Zz", u"C:\\A", u"C:\\A", 3},
                          {true, u"abel", u"C:\\N", u"C:\\N", 2},
                          {true, u"Abel", u"E:", u"E:", 1}}) {
        tool.database.clear();
        addAccounts();
        open();
        if (c.sorted && !window.lvwBenKto.Sorted()) sortByPathDescending();
        window.lvwBenKto.ListItems(u"BenKto:3").Select();
        window.lvwBenKto.userClickedSelectedRow();
        edit(c.name, c.path);
        window.userPressedKey(u'S', kCtrl);
        expectAccount(c.name, c.shown, 0);
        EXPECT_EQ(window.lvwBenKto.SelectedItem()->Index(), c.index);
        EXPECT_TRUE(window.lvwBenKto.hasFocus());
        EXPECT_THAT(boxes(), IsEmpty());
        const test::FakeDatabase::Row stored{abel[0], c.name, abel[2], c.path, false};
        EXPECT_THAT(tool.database.rows(), Contains(stored));
        EXPECT_EQ(tool.database.rows().size(), 3U);
        window.userClosed();
    }
}

TEST_F(CommandsTest, onlyCtrlSAloneSavesAndOnlyAChangedAccount) {
    struct Case {
        std::int16_t key, shift;
        bool changed, saves;
    };
    for (const Case& c : {Case{83, 2, true, true},
                          {83, 2, false, false},
                          {83, 0, true, false},
                          {83, 3, true, false},
                          {83, 6, true, false},
                          {83, 7, true, false},
                          {115, 2, true, false},
                          {13, 2, true, false}}) {
        window.lvwBenKto.userClickedSelectedRow();
        if (c.changed) window.txtPathGlobal.userTyped(u"C:\\A neu");
        tool.log.clear();
        window.userPressedKey(c.key, c.shift);
        EXPECT_EQ(std::count(tool.log.begin(), tool.log.end(), "update"), c.saves ? 1 : 0)
            << "key " << c.key << " shift " << c.shift;
        tool.database.clear();
        addAccounts();
    }
}

// Deleting

TEST_F(CommandsTest, deletingAsksAndThenShowsTheFirstRow) {
    struct Case {
        bool sorted;
        Answer answer;
        base::Text name, path, shownAfterwards;
    };
    for (const Case& c : {Case{false, Answer::No, u"Meier", u"C:\\M", u"Meier"},
                          {false, Answer::Yes, u"Meier", u"C:\\M", u"Abel"},
                          {true, Answer::Yes, u"Meier", u"C:\\M", u"Zorn"}}) {
        tool.database.clear();
        addAccounts();
        open();
        if (c.sorted) sortByPathDescending();
        window.lvwBenKto.ListItems(u"BenKto:8").Select();
        window.lvwBenKto.userClickedSelectedRow();
        window.txtPathGlobal.userTyped(u"ungespeichert");
        answerBoxesWith(c.answer);
        tool.log.clear();
        window.cmdDel.userClicked();
        EXPECT_THAT(boxes(),
                    ElementsAre("box Soll das Benutzerkonto 'Meier' jetzt gelöscht werden? [Yes/No] question"));
        EXPECT_EQ(window.lvwBenKto.SelectedItem()->Text(), c.shownAfterwards);
        EXPECT_EQ(window.txtUserNameDexo.Text(), c.shownAfterwards);
        const bool deleted = c.answer == Answer::Yes;
        EXPECT_EQ(tool.database.rows().size(), deleted ? 2U : 3U);
        EXPECT_EQ(window.cmdSpeichern.Enabled(), !deleted);
        if (deleted) {
            EXPECT_EQ(tool.log.at(1), "execute DELETE FROM Benutzerkonto WHERE BenKTO_ID = 8");
            window.txtPathGlobal.userTyped(u"danach");
            expectRed();
        }
        window.userClosed();
    }
}

TEST_F(CommandsTest, deletingTheLastAccountLocksTheWindowAndItsCommandsDoNothing) {
    answerBoxesWith(Answer::Yes);
    for (int i = 0; i < 3; ++i)
        window.cmdDel.userClicked();
    EXPECT_THAT(tool.database.rows(), IsEmpty());
    expectEmpty();
    EXPECT_TRUE(window.cmbAddNew.Enabled());
    tool.log.clear();
    window.cmdDel.userClicked();
    window.cmbResetPWD.userClicked();
    EXPECT_THAT(tool.log, IsEmpty());
}

// Resetting

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
    expectRed();

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
    EXPECT_EQ(tool.database.rows().back()[2], base::Value(base::Text(accountTable::kStoredInitialPassword)));
    expectAccount(u"Meier", u"C:\\M", 0);
    EXPECT_FALSE(window.cmbResetPWD.Enabled());

    tool.log.clear();
    for (int i = 0; i < 4; ++i)
        window.userPressedEnter();
    EXPECT_TRUE(window.lvwBenKto.hasFocus());
    EXPECT_THAT(tool.log, IsEmpty()) << "Enter meant for a box that has gone";
    EXPECT_EQ(tool.database.rows().size(), 3U);
}

// Folder and sorting

TEST_F(CommandsTest, aChosenFolderIsTheWholePathAndAnEmptyOneChangesNothing) {
    struct Case {
        bool confirmed;
        base::Text fromShell, path;
        bool changed;
    };
    for (const Case& c : {Case{true, base::Text(u"D:\\Büro\0Rest", 12), u"D:\\Büro", true},
                          {true, base::Text(u"D:\\\0", 4), u"D:\\", true},
                          {false, base::Text(u"D:\\Büro\0", 8), u"C:\\A", false},
                          {true, base::Text(u"\0", 1), u"C:\\A", false},
                          {true, u"", u"C:\\A", false},
                          {true, base::Text(u"C:\\A\0", 5), u"C:\\A", false}}) {
        window.lvwBenKto.userClickedSelectedRow();
        tool.services.folderChooser.confirmed = c.confirmed;
        tool.services.folderChooser.path = c.fromShell;
        tool.log.clear();
        window.cmdGlobal.userClicked();
        EXPECT_THAT(tool.log, ElementsAre("choose folder for window 0: Ordner für globale Dokumente"));
        EXPECT_EQ(window.txtPathGlobal.Text(), c.path);
        EXPECT_EQ(window.cmdSpeichern.Enabled(), c.changed);
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
        expectRed();
    }
    EXPECT_THAT(tool.log, IsEmpty()) << "nothing is read";
}

TEST_F(CommandsTest, afterEveryCommandTheNextEditMarksTheAccountAgain) {
    const std::vector<std::function<void()>> commands{
        [&] { window.userPressedKey(u'S', kCtrl); },
        [&] { window.cmdDel.userClicked(); },
        [&] { window.cmbResetPWD.userClicked(); },
        [&] {
            window.cmbAddNew.userClicked();
            window.cmbAddNew.userClicked();
        },
        [&] {
            window.cmbAddNew.userClicked();
            edit(u"Neu", u"C:\\N");
            window.cmdSpeichern.userClicked();
        },
        [&] { window.cmbAddNew.userClicked(); },
    };
    answerBoxesWith(Answer::Yes);
    for (std::size_t i = 0; i < commands.size(); ++i) {
        tool.database.clear();
        addAccounts();
        open();
        window.lvwBenKto.userSelectedRow(1);
        edit(u"Meier", u"C:\\anders");
        commands[i]();
        expectCleanSaveButton();
        window.chbProgrammupdate.userClicked();
        EXPECT_EQ(window.cmdSpeichern.BackColor(), 0x000000FFU) << "command " << i;
        window.userClosed();
    }
}

TEST_F(CommandsTest, whileABoxIsOpenTheWindowTakesNothingFromTheUser) {
    int shownCount = 0;
    const auto interfere = [&] {
        if (++shownCount > 5) return;
        const std::size_t asked = tool.log.size();
        window.userPressedKey(u'S', kCtrl);
        window.txtUserNameDexo.userTyped(u"von fremder Hand");
        window.lvwBenKto.userSelectedRow(1);
        window.lvwBenKto.userClickedSelectedRow();
        window.lvwBenKto.userClickedColumn(2);
        for (forms::CommandButton* button : {&window.cmdDel, &window.cmbResetPWD, &window.cmdGlobal})
            button->userClicked();
        window.cmbAddNew.userClicked();
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
    const std::vector<std::function<void()>> commands{[&] { window.cmdGlobal.userClicked(); },
                                                      [&] { window.cmbResetPWD.userClicked(); },
                                                      [&] { window.cmdDel.userClicked(); },
                                                      [&] {
                                                          window.cmbAddNew.userClicked();
                                                          edit(u"Neu", u"C:\\N");
                                                          window.cmdSpeichern.userClicked();
                                                      }};
    for (const auto& command : commands)
        command();
    EXPECT_EQ(shownCount, 5) << "resetting shows two";
    std::vector<base::Text> names;
    std::ranges::transform(tool.database.rows(), std::back_inserter(names), nameOf);
    EXPECT_THAT(names, ElementsAre(u"Abel", u"Meier", u"Neu"));
    window.userClosed();
    EXPECT_FALSE(window.isLoaded());
}

// Failures

TEST_F(CommandsTest, savingWithoutASelectedRowFailsBeforeAnythingIsReadOrWritten) {
    edit(u"Abel", u"C:\\neu");
    window.lvwBenKto.setSelectedItem(std::nullopt);
    EXPECT_EQ(errorOf([&] { window.cmdSpeichern.userClicked(); }), 91);
    EXPECT_THAT(tool.log, IsEmpty());
}

TEST_F(CommandsTest, theErrorOfAFailingStatementReachesTheCallerAndNothingIsWritten) {
    struct Case {
        base::Text name;
        std::string lockedFrom;
        std::function<void()> command;
        std::int32_t error;
    };
    const auto save = [&] { window.cmdSpeichern.userClicked(); };
    const auto erase = [&] { window.cmdDel.userClicked(); };
    const auto reset = [&] { window.cmbResetPWD.userClicked(); };
    answerBoxesWith(Answer::Yes);
    window.lvwBenKto.userSelectedRow(1);
    const auto before = tool.database.rows();
    for (const Case& c : {Case{u"O'Neil", "never", save, test::FakeDatabase::kSyntaxError},
                          {u"Neu", "update", save, test::FakeDatabase::kLocked},
                          {u"Neu", "execute", erase, test::FakeDatabase::kLocked},
                          {u"Neu", "execute", reset, test::FakeDatabase::kLocked}}) {
        window.txtUserNameDexo.userTyped(c.name);
        tool.database.lockedFrom = c.lockedFrom;
        tool.log.clear();
        EXPECT_EQ(errorOf(c.command), c.error);
        EXPECT_EQ(tool.database.rows(), before);
        EXPECT_EQ(window.lvwBenKto.rowCount(), 3);
        EXPECT_THAT(boxes(), Not(Contains(StartsWith("box Das"))));
    }
    window.cmbAddNew.userClicked();
    edit(u"Neu", u"C:\\N");
    tool.database.lockedFrom = "add row";
    tool.log.clear();
    EXPECT_EQ(errorOf(save), test::FakeDatabase::kLocked);
    EXPECT_THAT(boxes(), IsEmpty()) << "a locked file is met before the new account is announced";
}

}  // namespace
}  // namespace tolv
