#pragma once

namespace forms {
class CheckBox;
class CommandButton;
class TextBox;
}  // namespace forms

namespace tolv {

/// The controls of the account window through which the account store shows an account and reads it back.
/// They belong to the window and live longer than the store.
struct AccountFields {
    forms::TextBox& txtPathGlobal;
    forms::TextBox& txtUserNameDexo;
    forms::CheckBox& chbProgrammupdate;
    forms::CommandButton& cmbResetPWD;
};

}  // namespace tolv
