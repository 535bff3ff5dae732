#include "forms/ComboBox.h"
#include "forms/OptionButton.h"
#include "tests/support/Expect.h"
#include "tests/ui/AccountWindow.h"

namespace tolv {
namespace {

using testing::ElementsAre;

/// The window with more controls: one of each kind that its loops over controls handle but that it does not have.
class EditStateTest : public AccountWindow {
protected:
    EditStateTest() {
        addAccounts();
        tool.openAccountWindow();
        combo.AddItem(u"Eintrag");
    }

    /// Gives every property a value that none of the operations sets. This also makes the save button red.
    void setUnusualState(bool isEnabled) {
        for (forms::TextBox* box : {&window.txtUserNameDexo, &window.txtPathGlobal}) {
            box->setText(u"Rest");
            box->setBackColor(kUnusualColor);
        }
        combo.setListIndex(0);
        combo.setBackColor(kUnusualColor);
        option.setValue(true);
        for (forms::CheckBox* box : {&window.chbProgrammupdate, &renamed})
            box->setValue(forms::CheckBox::kChecked);
        for (forms::Control* control :
             std::initializer_list<forms::Control*>{&window.txtUserNameDexo, &window.txtPathGlobal, &combo, &option,
                                                    &window.chbProgrammupdate, &renamed, &window.cmdGlobal})
            control->setEnabled(isEnabled);
    }
    /// The properties that the action sets, in order.
    test::Log recorded(const std::function<void()>& action) {
        test::Log changes;
        std::vector<std::unique_ptr<Recorder>> recorders;
        for (forms::Control* control : window.Controls()) {
            if (control == &window.lvwBenKto || control == &window.cmbAddNew) continue;
            control->attachPeer(*recorders.emplace_back(std::make_unique<Recorder>(control->Name(), changes)));
        }
        action();
        for (forms::Control* control : window.Controls())
            control->detachPeer();
        return changes;
    }

    static constexpr forms::Color kUnusualColor = 0x00123456;
    forms::ComboBox combo{window, u"combo"};
    forms::OptionButton option{window, u"option", u""};
    /// Differs only in case from the name of the button that the loops skip.
    forms::CheckBox renamed{window, u"cmbaddnew", u""};
};

TEST_F(EditStateTest, lockingDisablesAndThenEmptiesAllControlsExceptTheNewAccountButton) {
    const forms::ListItem item = window.lvwBenKto.ListItems(1);
    window.lvwBenKto.setSelectedItem(std::nullopt);
    setUnusualState(true);
    EXPECT_THAT(
        recorded([&] { window.lvwBenKto.onItemClick(item); }),
        ElementsAre("chbProgrammupdate enabled value", "txtUserNameDexo enabled colour text",
                    "txtPathGlobal enabled colour text", "combo enabled colour index", "option enabled value",
                    "cmbaddnew enabled value", "cmdGlobal enabled", "cmdSpeichern caption colour bold enabled"));
    expectFields(u"", u"", forms::CheckBox::kUnchecked, false);
    expectCleanSaveButton();
    EXPECT_EQ(combo.BackColor(), 0x00C0C0C0U);
    EXPECT_EQ(combo.ListIndex(), -1);
    EXPECT_FALSE(option.Value());
    EXPECT_TRUE(window.cmbAddNew.Enabled());
    EXPECT_EQ(window.lvwBenKto.rowCount(), 3);
}

TEST_F(EditStateTest, preparingEmptiesAndThenEnablesAllControlsExceptOptionAndNewAccountButtons) {
    setUnusualState(false);
    window.cmbResetPWD.setEnabled(true);
    EXPECT_THAT(recorded([&] { window.cmbAddNew.userClicked(); }),
                ElementsAre("cmdSpeichern caption colour bold enabled", "chbProgrammupdate value enabled",
                            "txtUserNameDexo text enabled colour", "txtPathGlobal text enabled colour",
                            "combo index enabled colour", "cmbaddnew value enabled", "cmdGlobal enabled",
                            "cmbResetPWD enabled"));
    EXPECT_TRUE(option.Value());
    EXPECT_FALSE(option.Enabled());
    EXPECT_EQ(window.cmbAddNew.Value(), forms::CheckBox::kChecked);
}

TEST_F(EditStateTest, enablingChangesNoContentsAndNoCommandButton) {
    setUnusualState(false);
    window.cmbAddNew.setEnabled(false);
    tool.database.clear();  // makes loading fail after the controls have been enabled
    EXPECT_THAT(
        recorded([&] { EXPECT_EQ(test::errorOf([&] { window.lvwBenKto.userClickedSelectedRow(); }), 3021); }),
        ElementsAre("chbProgrammupdate enabled", "txtUserNameDexo enabled colour", "txtPathGlobal enabled colour",
                    "combo enabled colour", "option enabled", "cmbaddnew enabled"));
    EXPECT_TRUE(window.cmbAddNew.Enabled());
    EXPECT_FALSE(window.cmdGlobal.Enabled());
    EXPECT_EQ(combo.ListIndex(), 0);
}

}  // namespace
}  // namespace tolv
