#include "forms/ComboBox.h"
#include "forms/OptionButton.h"
#include "tests/support/Expect.h"
#include "tests/ui/AccountWindow.h"

namespace tolv {
namespace {

using testing::ElementsAreArray;

/// The window with an additional control of each kind that the loops handle but the window does not have.
class EditStateTest : public AccountWindow {
protected:
    EditStateTest() {
        addAccounts();
        tool.openAccountWindow();
        combo.AddItem(u"Eintrag");
    }

    /// Gives every property a value that none of the operations sets; the save button is red.
    void makeBusy(bool enabled) {
        for (forms::TextBox* box : {&window.txtUserNameDexo, &window.txtPathGlobal}) {
            box->setText(u"Rest");
            box->setBackColor(kBusyColor);
            box->setEnabled(enabled);
        }
        combo.setListIndex(0);
        combo.setBackColor(kBusyColor);
        combo.setEnabled(enabled);
        option.setValue(true);
        option.setEnabled(enabled);
        for (forms::CheckBox* box : {&window.chbProgrammupdate, &renamed}) {
            box->setValue(forms::CheckBox::kChecked);
            box->setEnabled(enabled);
        }
        window.cmdGlobal.setEnabled(enabled);
        tool.log.clear();
    }
    /// What the action sets, as the controls are told of it.
    test::Log recorded(const std::function<void()>& action) {
        tool.log.clear();
        std::vector<std::unique_ptr<Recorder>> recorders;
        for (forms::Control* control : window.Controls()) {
            if (control == &window.lvwBenKto || control == &window.cmbAddNew) continue;
            control->attachPeer(*recorders.emplace_back(std::make_unique<Recorder>(control->Name(), tool.log)));
        }
        action();
        for (forms::Control* control : window.Controls())
            control->detachPeer();
        return tool.log;
    }

    static constexpr forms::Color kBusyColor = 0x00123456;
    forms::ComboBox combo{window, u"combo"};
    forms::OptionButton option{window, u"option", u""};
    /// Differs only in case from the name of the button that the loops skip.
    forms::CheckBox renamed{window, u"cmbaddnew", u""};
};

TEST_F(EditStateTest, lockingDisablesThenEmptiesEveryKindButTheNewAccountButton) {
    const forms::ListItem item = window.lvwBenKto.ListItems(1);
    window.lvwBenKto.setSelectedItem(std::nullopt);
    makeBusy(true);
    const test::Log expected{"chbProgrammupdate enabled",
                             "chbProgrammupdate value",
                             "txtUserNameDexo enabled",
                             "txtUserNameDexo colour",
                             "txtUserNameDexo text",
                             "txtPathGlobal enabled",
                             "txtPathGlobal colour",
                             "txtPathGlobal text",
                             "combo enabled",
                             "combo colour",
                             "combo index",
                             "option enabled",
                             "option value",
                             "cmbaddnew enabled",
                             "cmbaddnew value",
                             "cmdGlobal enabled",
                             "cmdSpeichern caption",
                             "cmdSpeichern colour",
                             "cmdSpeichern bold",
                             "cmdSpeichern enabled"};
    EXPECT_EQ(recorded([&] { window.lvwBenKto.onItemClick(item); }), expected);
    expectEmpty();
    EXPECT_EQ(combo.BackColor(), kGrey);
    EXPECT_EQ(combo.ListIndex(), -1);
    EXPECT_FALSE(option.Value());
    EXPECT_TRUE(window.cmbAddNew.Enabled());
    EXPECT_EQ(window.lvwBenKto.rowCount(), 3);
}

TEST_F(EditStateTest, preparingEmptiesThenEnablesEveryKindButOptionButtonsAndTheNewAccountButton) {
    makeBusy(false);
    window.cmbResetPWD.setEnabled(true);
    EXPECT_THAT(recorded([&] { window.cmbAddNew.userClicked(); }),
                ElementsAreArray({"cmdSpeichern caption", "cmdSpeichern colour", "cmdSpeichern bold",
                                  "cmdSpeichern enabled", "chbProgrammupdate value", "chbProgrammupdate enabled",
                                  "txtUserNameDexo text", "txtUserNameDexo enabled", "txtUserNameDexo colour",
                                  "txtPathGlobal text", "txtPathGlobal enabled", "txtPathGlobal colour", "combo index",
                                  "combo enabled", "combo colour", "cmbaddnew value", "cmbaddnew enabled",
                                  "cmdGlobal enabled", "cmbResetPWD enabled"}));
    EXPECT_EQ(window.txtPathGlobal.BackColor(), 0x80000005U);
    EXPECT_TRUE(option.Value());
    EXPECT_FALSE(option.Enabled());
    EXPECT_EQ(window.cmbAddNew.Value(), forms::CheckBox::kChecked);
}

TEST_F(EditStateTest, enablingTouchesNoContentsAndNoCommandButton) {
    makeBusy(false);
    window.cmbAddNew.setEnabled(false);
    tool.database.clear();  // makes loading fail after the controls have been enabled
    EXPECT_EQ(test::errorOf([&] {
                  EXPECT_THAT(recorded([&] { window.lvwBenKto.userClickedSelectedRow(); }), testing::IsEmpty());
              }),
              3021);
    EXPECT_THAT(tool.log, ElementsAreArray({"chbProgrammupdate enabled", "txtUserNameDexo enabled",
                                            "txtUserNameDexo colour", "txtPathGlobal enabled", "txtPathGlobal colour",
                                            "combo enabled", "combo colour", "option enabled", "cmbaddnew enabled",
                                            "open rows SELECT * FROM Benutzerkonto WHERE BenKTO_ID = 3 3 1 -1"}));
    EXPECT_TRUE(window.cmbAddNew.Enabled());
    EXPECT_FALSE(window.cmdGlobal.Enabled());
    EXPECT_EQ(combo.ListIndex(), 0);
}

TEST_F(EditStateTest, everyEditMarksTheAccountAsChangedUntilItIsLoadedAgain) {
    const std::vector<std::function<void()>> edits{
        [&] { window.txtUserNameDexo.userTyped(u"Abel2"); },
        [&] { window.txtPathGlobal.userTyped(u"C:\\A2"); },
        [&] { window.txtPathGlobal.setText(u"C:\\A3"); },
        [&] { window.chbProgrammupdate.userClicked(); },
        [&] { window.chbProgrammupdate.setValue(forms::CheckBox::kChecked); },
        [&] {
            window.txtUserNameDexo.userTyped(u"Abel2");
            window.txtUserNameDexo.userTyped(u"Abel");
        },
    };
    const auto expectRed = [&] {
        EXPECT_EQ(window.cmdSpeichern.Caption(), u"Speichern (Strg+S)");
        EXPECT_EQ(window.cmdSpeichern.BackColor(), 0x000000FFU);
        EXPECT_TRUE(window.cmdSpeichern.FontBold());
        EXPECT_TRUE(window.cmdSpeichern.Enabled());
    };
    for (const auto& edit : edits) {
        edit();
        expectRed();
        window.lvwBenKto.userClickedSelectedRow();
        expectAccount(u"Abel", u"C:\\A", 0);
    }
    EXPECT_THAT(recorded(edits.front()), ElementsAreArray({"cmdSpeichern caption", "cmdSpeichern colour",
                                                           "cmdSpeichern bold", "cmdSpeichern enabled"}))
        << "what the user typed is shown already";
}

}  // namespace
}  // namespace tolv
