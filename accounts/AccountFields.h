#pragma once

namespace forms {
class CheckBox;
class CommandButton;
class TextBox;
}  // namespace forms

namespace tolv {

/// The controls of the account window in which the account store shows an account and from which it reads it back. They
/// belong to the window and outlive the store.
struct AccountFields {
    forms::TextBox& txtPathGlobal;
    forms::TextBox& txtUserNameDexo;
    forms::CheckBox& chbProgrammupdate;
    forms::CommandButton& cmbResetPWD;
};

}  // namespace tolv
