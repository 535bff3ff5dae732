#pragma once

#include "forms/CommandButton.h"
#include "forms/Form.h"
#include "forms/Label.h"
#include "forms/TextBox.h"
#include "platform/Platform.h"

namespace tolv {

/// The login dialog: asks for the administrator password until it is right or the user gives up. Its only result is
/// LoginOK.
class frmLogin : public forms::Form {
public:
    frmLogin(forms::FormHost& host, platform::FileSystem& fileSystem, platform::MessageBoxes& messageBoxes);

    // Controls in order of definition.
    forms::Label Label6;
    forms::TextBox txtPasswort;
    forms::CommandButton cmdLogin;
    forms::CommandButton cmdAbbrechen;

private:
    void Form_Load();
    void cmdLogin_Click();
    void cmdAbbrechen_Click();

    platform::FileSystem& fileSystem_;
    platform::MessageBoxes& messageBoxes_;
};

}  // namespace tolv
