#include "ui/frmBenKto.h"

#include "accounts/AccountId.h"
#include "accounts/cBenutzerkonten.h"
#include "forms/ComboBox.h"
#include "forms/OptionButton.h"
#include "listutil/cFormularsteuerung.h"

namespace tolv {
namespace {

constexpr forms::Color kLockedGrey = 0x00C0C0C0;

/// The name by which the locking loops pass over the button for new accounts.
constexpr base::TextView kAddNewName = u"cmbAddNew";

constexpr int kNameWidthHimetric = 5556;
constexpr int kServerPathWidthHimetric = 2540;

/// Shows the hourglass as long as it lives, so that an error does not leave it behind.
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
      regional_(services.regional) {
    onLoad = [this] { Form_Load(); };
    onUnload = [this] { Form_Unload(); };
    lvwBenKto.onItemClick = [this](const forms::ListItem& item) { lvwBenKto_ItemClick(item); };
    cmdAbbrechen.onClick = [this] { cmdAbbrechen_Click(); };

    setUpControls();
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
    if (lvwBenKto.rowCount() == 0) {
        ClearAndLockControls();
    } else {
        lvwBenKto.ListItems(1).Select();
        lvwBenKto_ItemClick(*lvwBenKto.SelectedItem());
    }
    bTrackChanges = kTrue;
    disableMissingCommands();
}

void frmBenKto::Form_Unload() {
    ReleaseSharedObjects();
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
        objBenKto->ShowBenKtoValues(accountId(item.Tag(), regional_));
        ResetSaveButton();
    }
    bTrackChanges = kTrue;
    disableMissingCommands();
}

void frmBenKto::cmdAbbrechen_Click() {
    Unload();
}

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

void frmBenKto::ResetSaveButton() {
    cmdSpeichern.setCaption(u"Speichern");
    cmdSpeichern.setBackColor(forms::kButtonFace);
    cmdSpeichern.setFontBold(false);
    cmdSpeichern.setEnabled(false);
}

void frmBenKto::disableMissingCommands() {
    cmbAddNew.setEnabled(false);
    cmdGlobal.setEnabled(false);
    cmbResetPWD.setEnabled(false);
    cmdDel.setEnabled(false);
}

}  // namespace tolv
