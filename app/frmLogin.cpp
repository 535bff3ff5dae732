#include "app/frmLogin.h"

#include "app/mPublic.h"

namespace tolv {
namespace {

/// On a workstation that has this file, whatever its contents, the password is filled in already.
constexpr base::TextView kMarkerFile = u"C:\\mmtolvblankologin";

}  // namespace

frmLogin::frmLogin(forms::FormHost& host, platform::FileSystem& fileSystem, platform::MessageBoxes& messageBoxes)
    : Form(host, u"frmLogin", u"Anmeldung"),
      Label6(*this, u"Label6", u"Kennwort"),
      txtPasswort(*this, u"txtPasswort"),
      cmdLogin(*this, u"cmdLogin", u"Starten"),
      cmdAbbrechen(*this, u"cmdAbbrechen", u"Abbrechen"),
      fileSystem_(fileSystem),
      messageBoxes_(messageBoxes) {
    onLoad = [this] { Form_Load(); };
    cmdLogin.onClick = [this] { cmdLogin_Click(); };
    cmdAbbrechen.onClick = [this] { cmdAbbrechen_Click(); };

    setClientSize(4950, 1215);
    Label6.setBounds({120, 120, 675, 195});
    txtPasswort.setBounds({120, 360, 4695, 285});
    cmdLogin.setBounds({120, 720, 2295, 375});
    cmdAbbrechen.setBounds({2520, 720, 2295, 375});
    Label6.setTabIndex(0);
    txtPasswort.setTabIndex(1);
    cmdLogin.setTabIndex(2);
    cmdAbbrechen.setTabIndex(3);
    txtPasswort.setPasswordChar(u'*');
    setDefaultButton(cmdLogin);
    setCancelButton(cmdAbbrechen);
}

void frmLogin::Form_Load() {
    const auto fso = fileSystem_.createObject();  // an object of its own: the shared one is made after the login
    if (fso->FileExists(kMarkerFile)) txtPasswort.setText(kAdministratorPassword);
}

void frmLogin::cmdLogin_Click() {
    if (txtPasswort.Text() != kAdministratorPassword) {
        messageBoxes_.show(u"Falsches Passwort.", platform::MessageBoxes::Buttons::Ok,
                           platform::MessageBoxes::Icon::Critical);
        return;
    }
    LoginOK = kTrue;
    Unload();
}

void frmLogin::cmdAbbrechen_Click() {
    Unload();
}

}  // namespace tolv
