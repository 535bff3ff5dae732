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

/// The account window: the list of all accounts, the fields of the selected one, and the commands. It is always in one
/// of these states, which only its controls hold:
///
///     Empty             no accounts; fields empty, grey, disabled
///     Viewing           one account selected; fields show what the table held when it was selected
///     Viewing, changed  the same, edited: the save button is red and enabled
///     New               cmbAddNew is on; list and fields are empty, fields can be edited
///     New, changed      the same, edited
///
/// Only the save button shows that there are unsaved edits. They are lost without a question when an account is loaded,
/// when cmbAddNew is clicked, and when the window is unloaded, which also releases the shared objects. Selection and
/// fields always agree: every move of the selection loads the account before it returns.
class frmBenKto : public forms::Form {
public:
    frmBenKto(forms::FormHost& host, const platform::Services& services);

    /// The controls that the account store uses.
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

    /// Lets the user choose a folder.
    /// @param owner  the window that is blocked meanwhile, null if there is none
    /// @return the path as the shell gives it; empty if the user cancels or chooses an item without a path
    base::Text GivePathName(const forms::Form* owner = nullptr, base::TextView title = u"Wählen Sie einen Ordner aus");

private:
    void connectEvents();
    void setUpControls();

    void Form_Load();
    void Form_Unload();
    void Form_KeyDown(std::int16_t keyCode, std::int16_t shift);
    void txtUserNameDexo_Change();
    void txtPathGlobal_Change();
    void chbProgrammupdate_Click();
    void lvwBenKto_ItemClick(const forms::ListItem& item);
    void lvwBenKto_ColumnClick(const forms::ColumnHeader& header);
    void cmdGlobal_Click();
    void cmbAddNew_Click();
    void cmdSpeichern_Click();
    void cmdDel_Click();
    void cmbResetPWD_Click();
    void cmdAbbrechen_Click();

    void EnableEditControls();
    void ResetSaveButton();
    void ClearAndLockControls();
    void PrepareNewAccount();
    void MarkChanged();
    void SetChanged();

    /// Shows the first row in the current sort order; locks the fields if there are no rows.
    void showFirstAccount();
    /// @throws base::RuntimeError 91 if no row is selected
    forms::ListItem selectedRow();
    std::int32_t idOf(const forms::ListItem& row) const;
    void notify(base::TextView text);
    bool isConfirmed(base::TextView question);

    platform::MousePointer& mousePointer_;
    platform::MessageBoxes& messageBoxes_;
    platform::FolderChooser& folderChooser_;
    const platform::Regional& regional_;

    std::int16_t bTrackChanges = kFalse;  ///< while false, edits do not mark the account as changed
    std::int16_t bHandleAddNew = kFalse;  ///< while false, a change of cmbAddNew has no effect
};

}  // namespace tolv
