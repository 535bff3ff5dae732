#include "ui/frmBenKto.h"

#include "accounts/AccountId.h"
#include "accounts/AccountTable.h"
#include "accounts/InitialPasswordNotice.h"
#include "accounts/cBenutzerkonten.h"
#include "base/RuntimeError.h"
#include "db/cDB.h"
#include "forms/ComboBox.h"
#include "forms/OptionButton.h"
#include "listutil/cFormularsteuerung.h"

namespace tolv {
namespace {

constexpr forms::Color kLockedGrey = 0x00C0C0C0;
constexpr forms::Color kChangedRed = 0x000000FF;

constexpr std::int16_t kKeyS = 83;

/// Size in units of the buffer for a path from the shell.
constexpr std::size_t kPathUnits = 260;

/// The loops that lock and unlock controls recognise the button for new accounts by this name.
constexpr base::TextView kAddNewName = u"cmbAddNew";

constexpr int kNameWidthHimetric = 5556;
constexpr int kServerPathWidthHimetric = 2540;

/// Shows the hourglass while it lives, so that an error does not leave the hourglass on the screen.
class Hourglass {
public:
    explicit Hourglass(platform::MousePointer& pointer) : pointer_(pointer) {
        pointer_.set(platform::MousePointer::Shape::Hourglass);
    }
    ~Hourglass() { pointer_.set(platform::MousePointer::Shape::Default); }
    Hourglass(const Hourglass&) = delete;
    Hourglass& operator=(const Hourglass&) = delete;

private:
    platform::MousePointer& pointer_;
};

}  // namespace

frmBenKto::frmBenKto(forms::FormHost& host, const platform::Services& services)
    : Form(host, u"frmBenKto", base::Text(kApplicationTitle)),
      chbProgrammupdate(*this, u"chbProgrammupdate", u"Programmupdate"),
      Frame27(*this, u"Frame27", u""),
      cmbResetPWD(*this, u"cmbResetPWD", u"Passwort zurücksetzen"),
      txtUserNameDexo(*this, u"txtUserNameDexo"),
      txtPathGlobal(*this, u"txtPathGlobal"),
      cmdGlobal(*this, u"cmdGlobal", u"Durchsuchen..."),
      Label1(*this, u"Label1", u"Benutzername"),
      Label5(*this, u"Label5", u"TOLV_SERVER Pfad:"),
      cmdAbbrechen(*this, u"cmdAbbrechen", u"Schließen"),
      cmdDel(*this, u"cmdDel", u"Konto löschen"),
      cmbAddNew(*this, base::Text(kAddNewName), u"Neues Konto erstellen", forms::CheckBox::Style::Graphical),
      cmdSpeichern(*this, u"cmdSpeichern", u"Speichern", forms::CommandButton::Style::Graphical),
      lvwBenKto(*this, u"lvwBenKto"),
      imgList_Sort(*this, u"imgList_Sort",
                   {forms::ImageList::Picture::SortAscending, forms::ImageList::Picture::SortDescending}),
      mousePointer_(services.mousePointer),
      messageBoxes_(services.messageBoxes),
      folderChooser_(services.folderChooser),
      regional_(services.regional) {
    connectEvents();
    setUpControls();
}

void frmBenKto::connectEvents() {
    onLoad = [this] { Form_Load(); };
    onUnload = [this] { Form_Unload(); };
    lvwBenKto.onItemClick = [this](const forms::ListItem& item) { lvwBenKto_ItemClick(item); };
    lvwBenKto.onColumnClick = [this](const forms::ColumnHeader& header) { lvwBenKto_ColumnClick(header); };
    cmdAbbrechen.onClick = [this] { cmdAbbrechen_Click(); };
    onKeyDown = [this](std::int16_t keyCode, std::int16_t shift) { Form_KeyDown(keyCode, shift); };
    txtUserNameDexo.onChange = [this] { txtUserNameDexo_Change(); };
    txtPathGlobal.onChange = [this] { txtPathGlobal_Change(); };
    chbProgrammupdate.onClick = [this] { chbProgrammupdate_Click(); };
    cmdGlobal.onClick = [this] { cmdGlobal_Click(); };
    cmbAddNew.onClick = [this] { cmbAddNew_Click(); };
    cmdSpeichern.onClick = [this] { cmdSpeichern_Click(); };
    cmdDel.onClick = [this] { cmdDel_Click(); };
    cmbResetPWD.onClick = [this] { cmbResetPWD_Click(); };
}

void frmBenKto::setUpControls() {
    setKeyPreview(true);
    setCancelButton(cmdAbbrechen);

    lvwBenKto.setView(forms::ListView::ViewMode::Report);
    lvwBenKto.addColumn(u"Benutzername", kNameWidthHimetric);
    lvwBenKto.addColumn(u"ServerPath", kServerPathWidthHimetric);
    lvwBenKto.sortKeyOf = [this](base::TextView text) { return regional_.sortKey(text); };
    lvwBenKto.areEqual = [this](base::TextView a, base::TextView b) { return regional_.compare(a, b) == 0; };

    int tabIndex = 0;
    for (forms::Control* control :
         {static_cast<forms::Control*>(&lvwBenKto), static_cast<forms::Control*>(&cmbAddNew),
          static_cast<forms::Control*>(&txtUserNameDexo), static_cast<forms::Control*>(&txtPathGlobal),
          static_cast<forms::Control*>(&cmdGlobal), static_cast<forms::Control*>(&chbProgrammupdate),
          static_cast<forms::Control*>(&cmdSpeichern), static_cast<forms::Control*>(&cmbResetPWD),
          static_cast<forms::Control*>(&cmdDel), static_cast<forms::Control*>(&cmdAbbrechen)}) {
        control->setTabIndex(tabIndex++);
    }
}

void frmBenKto::Form_Load() {
    bHandleAddNew = kTrue;
    objBenKto->ShowBenKto(lvwBenKto);
    lvwBenKto.setColumnHeaderIcons(&imgList_Sort);
    objForm->SetHeaderIcon(lvwBenKto);
    bTrackChanges = kFalse;
    showFirstAccount();
    bTrackChanges = kTrue;
}

void frmBenKto::Form_Unload() {
    ReleaseSharedObjects();
}

void frmBenKto::Form_KeyDown(std::int16_t keyCode, std::int16_t shift) {
    if (keyCode == kKeyS && shift == kCtrlMask && cmdSpeichern.Enabled()) cmdSpeichern_Click();
}

void frmBenKto::txtUserNameDexo_Change() {
    MarkChanged();
}

void frmBenKto::txtPathGlobal_Change() {
    MarkChanged();
}

void frmBenKto::chbProgrammupdate_Click() {
    MarkChanged();
}

void frmBenKto::lvwBenKto_ItemClick(const forms::ListItem& item) {
    if (!lvwBenKto.SelectedItem()) {
        ClearAndLockControls();
        return;
    }
    EnableEditControls();
    bTrackChanges = kFalse;
    lvwBenKto.Refresh();
    {
        const Hourglass hourglass(mousePointer_);
        objBenKto->ShowBenKtoValues(idOf(item));
        ResetSaveButton();
    }
    bTrackChanges = kTrue;
}

void frmBenKto::lvwBenKto_ColumnClick(const forms::ColumnHeader& header) {
    objForm->Sort_ListView(header, lvwBenKto);
}

void frmBenKto::cmdGlobal_Click() {
    const base::Text path = GivePathName(this, u"Ordner für globale Dokumente");
    if (!path.empty()) txtPathGlobal.setText(path);
}

base::Text frmBenKto::GivePathName(const forms::Form* owner, base::TextView title) {
    base::Text buffer(kPathUnits, u' ');
    if (!folderChooser_.choose(owner != nullptr ? owner->hWnd() : 0, title, buffer)) return {};
    const std::size_t end = buffer.find(u'\0');
    return end != base::Text::npos ? buffer.substr(0, end) : base::Text();
}

// Commands

void frmBenKto::cmbAddNew_Click() {
    if (bHandleAddNew == kFalse) return;
    bTrackChanges = kFalse;
    if (cmbAddNew.Value() == forms::CheckBox::kChecked) {
        ResetSaveButton();
        PrepareNewAccount();
        lvwBenKto.clearRows();
        cmbResetPWD.setEnabled(false);
    } else {
        objBenKto->ShowBenKto(lvwBenKto);
        showFirstAccount();
        ResetSaveButton();
    }
    bTrackChanges = kTrue;
}

void frmBenKto::cmdSpeichern_Click() {
    txtPathGlobal.setText(base::Text(base::trimBlanks(txtPathGlobal.Text())));
    txtUserNameDexo.setText(base::Text(base::trimBlanks(txtUserNameDexo.Text())));
    if (txtUserNameDexo.Text().empty()) {
        notify(u"Bitte geben Sie den Benutzernamen an.");
        txtUserNameDexo.SetFocus();
        return;
    }
    if (txtPathGlobal.Text().empty()) {
        notify(u"Bitte geben Sie den Datenbankpfad an.");
        txtPathGlobal.SetFocus();
        return;
    }
    const bool isNew = cmbAddNew.Value() == forms::CheckBox::kChecked;
    const std::int32_t id = isNew ? accountTable::kNewAccount : idOf(selectedRow());
    if (objBenKto->KontoSchonDa(txtUserNameDexo.Text(), id) == kTrue) {
        notify(u"Es existiert bereits ein Benutzerkonto mit dieser Bezeichnung.");
        return;
    }
    const std::int32_t savedId = objBenKto->SaveBenKto(id);
    if (isNew) {
        bHandleAddNew = kFalse;
        cmbAddNew.setValue(forms::CheckBox::kUnchecked);
        bHandleAddNew = kTrue;
    }
    objBenKto->ShowBenKto(lvwBenKto);
    forms::ListItem saved = lvwBenKto.ListItems(accountTable::listKey(savedId));
    saved.Select();
    saved.EnsureVisible();
    lvwBenKto_ItemClick(saved);
    ResetSaveButton();
    lvwBenKto.SetFocus();
}

void frmBenKto::cmdDel_Click() {
    const auto row = lvwBenKto.SelectedItem();
    if (!row) return;
    if (!isConfirmed(base::Text(u"Soll das Benutzerkonto '").append(row->Text()).append(u"' jetzt gelöscht werden?"))) {
        return;
    }
    objDB->Connection().Execute(accountTable::deleteById(regional_.toText(row->Tag())));
    bTrackChanges = kFalse;
    objBenKto->ShowBenKto(lvwBenKto);
    showFirstAccount();
    ResetSaveButton();
    bTrackChanges = kTrue;
}

void frmBenKto::cmbResetPWD_Click() {
    const auto row = lvwBenKto.SelectedItem();
    if (!row) return;
    if (!isConfirmed(
            base::Text(u"Soll das Passwort für '").append(row->Text()).append(u"' jetzt zurückgesetzt werden?"))) {
        return;
    }
    objDB->Connection().Execute(accountTable::updateToInitialPassword(regional_.toText(row->Tag())));
    notify(initialPasswordNotice(base::Text(u"Das Passwort für '")
                                     .append(row->Text())
                                     .append(u"' wurde auf folgendes Initialpasswwort zurückgesetzt:")));
    lvwBenKto_ItemClick(selectedRow());
}

void frmBenKto::cmdAbbrechen_Click() {
    Unload();
}

// Edit state

void frmBenKto::EnableEditControls() {
    for (forms::Control* control : Controls()) {
        if (auto* textBox = forms::as<forms::TextBox>(*control)) {
            textBox->setEnabled(true);
            textBox->setBackColor(forms::kWindowBackground);
        } else if (auto* comboBox = forms::as<forms::ComboBox>(*control)) {
            comboBox->setEnabled(true);
            comboBox->setBackColor(forms::kWindowBackground);
        } else if (auto* optionButton = forms::as<forms::OptionButton>(*control)) {
            optionButton->setEnabled(true);
        } else if (auto* checkBox = forms::as<forms::CheckBox>(*control)) {
            checkBox->setEnabled(true);
        }
    }
}

void frmBenKto::ResetSaveButton() {
    cmdSpeichern.setCaption(u"Speichern");
    cmdSpeichern.setBackColor(forms::kButtonFace);
    cmdSpeichern.setFontBold(false);
    cmdSpeichern.setEnabled(false);
}

void frmBenKto::ClearAndLockControls() {
    for (forms::Control* control : Controls()) {
        if (control->Name() == kAddNewName) continue;
        if (auto* textBox = forms::as<forms::TextBox>(*control)) {
            textBox->setEnabled(false);
            textBox->setBackColor(kLockedGrey);
            textBox->setText(u"");
        } else if (auto* comboBox = forms::as<forms::ComboBox>(*control)) {
            comboBox->setEnabled(false);
            comboBox->setBackColor(kLockedGrey);
            comboBox->setListIndex(-1);
        } else if (auto* optionButton = forms::as<forms::OptionButton>(*control)) {
            optionButton->setEnabled(false);
            optionButton->setValue(false);
        } else if (auto* checkBox = forms::as<forms::CheckBox>(*control)) {
            checkBox->setEnabled(false);
            checkBox->setValue(forms::CheckBox::kUnchecked);
        }
    }
    cmdGlobal.setEnabled(false);
    ResetSaveButton();
}

void frmBenKto::PrepareNewAccount() {
    for (forms::Control* control : Controls()) {
        if (control->Name() == kAddNewName) continue;
        if (auto* textBox = forms::as<forms::TextBox>(*control)) {
            textBox->setText(u"");
            textBox->setEnabled(true);
            textBox->setBackColor(forms::kWindowBackground);
        } else if (auto* comboBox = forms::as<forms::ComboBox>(*control)) {
            comboBox->setListIndex(-1);
            comboBox->setEnabled(true);
            comboBox->setBackColor(forms::kWindowBackground);
        } else if (auto* checkBox = forms::as<forms::CheckBox>(*control)) {
            checkBox->setValue(forms::CheckBox::kUnchecked);
            checkBox->setEnabled(true);
        }
    }
    cmdGlobal.setEnabled(true);
    ResetSaveButton();
}

void frmBenKto::MarkChanged() {
    if (bTrackChanges != kTrue) return;
    cmdSpeichern.setCaption(u"Speichern (Strg+S)");
    cmdSpeichern.setBackColor(kChangedRed);
    cmdSpeichern.setFontBold(true);
    cmdSpeichern.setEnabled(true);
}

void frmBenKto::SetChanged() {
    MarkChanged();
}

// Helpers of the handlers

void frmBenKto::showFirstAccount() {
    if (lvwBenKto.rowCount() == 0) {
        ClearAndLockControls();
        return;
    }
    forms::ListItem first = lvwBenKto.ListItems(1);
    first.Select();
    first.EnsureVisible();  // refilling a list does not scroll it
    lvwBenKto_ItemClick(first);
}

forms::ListItem frmBenKto::selectedRow() {
    const auto row = lvwBenKto.SelectedItem();
    if (!row) throw base::runtimeError(base::RuntimeErrorNumber::ObjectVariableNotSet);
    return *row;
}

std::int32_t frmBenKto::idOf(const forms::ListItem& row) const {
    return accountId(row.Tag(), regional_);
}

void frmBenKto::notify(base::TextView text) {
    messageBoxes_.show(text, platform::MessageBoxes::Buttons::Ok, platform::MessageBoxes::Icon::Information);
}

bool frmBenKto::isConfirmed(base::TextView question) {
    return messageBoxes_.show(question, platform::MessageBoxes::Buttons::YesNo,
                              platform::MessageBoxes::Icon::Question) == platform::MessageBoxes::Answer::Yes;
}

}  // namespace tolv
