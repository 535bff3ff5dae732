#pragma once

#include <cstdint>

#include "accounts/AccountFields.h"
#include "app/mPublic.h"
#include "forms/CheckBox.h"
#include "forms/CommandButton.h"
#include "forms/Form.h"
#include "forms/Frame.h"
#include "forms/ImageList.h"
#include "forms/Label.h"
#include "forms/ListView.h"
#include "forms/TextBox.h"
#include "platform/Platform.h"

namespace tolv {

/// The account window: the list of all accounts and the fields of the selected one. It is in one of these
/// states, which its controls themselves hold:
///
///     Empty    no accounts; fields empty, grey, disabled
///     Viewing  one account selected; fields show what the table held when it was selected
///
/// Selection and fields never part: every move of the selection loads the account before it returns.
/// Unloading releases the shared objects, and unsaved edits are dropped without a question.
class frmBenKto : public forms::Form {
public:
    frmBenKto(forms::FormHost& host, const platform::Services& services);

    /// The controls that the account store works on.
    AccountFields accountFields() { return {txtPathGlobal, txtUserNameDexo, chbProgrammupdate, cmbResetPWD}; }

    // Controls in the order of definition.
    forms::CheckBox chbProgrammupdate;
    forms::Frame Frame27;
    forms::CommandButton cmbResetPWD;
    forms::TextBox txtUserNameDexo;
    forms::TextBox txtPathGlobal;
    forms::CommandButton cmdGlobal;
    forms::Label Label1;
    forms::Label Label5;
    forms::CommandButton cmdAbbrechen;
    forms::CommandButton cmdDel;
    forms::CheckBox cmbAddNew;
    forms::CommandButton cmdSpeichern;
    forms::ListView lvwBenKto;
    forms::ImageList imgList_Sort;

private:
    void setUpControls();

    void Form_Load();
    void Form_Unload();
    void lvwBenKto_ItemClick(const forms::ListItem& item);
    void cmdAbbrechen_Click();

    void EnableEditControls();
    void ClearAndLockControls();
    void ResetSaveButton();
    /// The buttons of commands that the window does not have yet stay disabled in every state.
    void disableMissingCommands();

    platform::MousePointer& mousePointer_;
    const platform::Regional& regional_;

    std::int16_t bTrackChanges = kFalse;  ///< while false, edits do not mark the account as changed
    std::int16_t bHandleAddNew = kFalse;  ///< while false, cmbAddNew changes without effect
};

}  // namespace tolv
