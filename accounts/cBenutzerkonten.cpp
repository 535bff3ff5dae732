#include "accounts/cBenutzerkonten.h"

#include <type_traits>
#include <variant>

#include "accounts/AccountId.h"
#include "accounts/AccountTable.h"
#include "accounts/InitialPasswordNotice.h"
#include "app/mPublic.h"
#include "db/cDB.h"
#include "forms/CheckBox.h"
#include "forms/CommandButton.h"
#include "forms/TextBox.h"
#include "listutil/cFormularsteuerung.h"

namespace tolv {

std::int16_t cBenutzerkonten::KontoSchonDa(base::TextView /*name*/, std::int32_t id) {
    const base::Text& name = fields_.txtUserNameDexo.Text();
    const auto recordset = openRecordset(
        id == accountTable::kNewAccount ? accountTable::selectByName(name) : accountTable::selectOthersByName(name, id),
        ado::LockType::adLockReadOnly);
    const std::int16_t exists = recordset->RecordCount() > 0 ? kTrue : kFalse;
    recordset->Close();
    return exists;
}

std::int32_t cBenutzerkonten::SaveBenKto(std::int32_t id) {
    const auto recordset = openRecordset(accountTable::selectById(id), ado::LockType::adLockPessimistic);
    if (recordset->RecordCount() == 0) recordset->AddNew();  // also where somebody has deleted the row
    ado::Fields& row = recordset->Fields();
    row.Item(accountTable::kName).setValue(fields_.txtUserNameDexo.Text());
    if (id == accountTable::kNewAccount) {
        row.Item(accountTable::kPass).setValue(base::Text(accountTable::kStoredInitialPassword));
        announceInitialPassword();
    }
    row.Item(accountTable::kProgUpdate).setValue(fields_.chbProgrammupdate.Value());
    row.Item(accountTable::kServerPath).setValue(base::Text(base::trimBlanks(fields_.txtPathGlobal.Text())));
    // Before Update: a new row's number is known since AddNew.
    const std::int32_t savedId = accountId(row.Item(accountTable::kId).Value(), regional_);
    recordset->Update();
    recordset->Close();
    return savedId;
}

/// "Initialpasswwort" with the doubled w, as the administrators know the message.
void cBenutzerkonten::announceInitialPassword() {
    const base::Text created =
        u"Das Benutzerkonto '" + fields_.txtUserNameDexo.Text() + u"' wurde mit folgendem Initialpasswwort angelegt:";
    messageBoxes_.show(initialPasswordNotice(created), platform::MessageBoxes::Buttons::Ok,
                       platform::MessageBoxes::Icon::Information);
}

void cBenutzerkonten::ShowBenKto(forms::ListView& listView) {
    listView.clearRows();
    const auto recordset = openRecordset(accountTable::selectAll(), ado::LockType::adLockPessimistic);
    ado::Fields& fields = recordset->Fields();
    ado::Field& id = fields.Item(accountTable::kId);
    ado::Field& name = fields.Item(accountTable::kName);
    ado::Field& serverPath = fields.Item(accountTable::kServerPath);
    while (!recordset->isEOF()) {
        forms::ListItem item = listView.addRow();
        item.setText(objDB->GiveTextBoxValueForFORM(name.Value()));
        item.setTag(id.Value());
        item.setKey(accountTable::listKey(accountId(item.Tag(), regional_)));
        item.setSubItems(1, objDB->GiveTextBoxValueForFORM(serverPath.Value()));
        recordset->MoveNext();
    }
    recordset->Close();
    objForm->SetColWidth(listView, LVSCW_AUTOSIZE_USEHEADER);
}

void cBenutzerkonten::ShowBenKtoValues(std::int32_t id) {
    const auto recordset = openRecordset(accountTable::selectById(id), ado::LockType::adLockReadOnly);
    ado::Fields& row = recordset->Fields();
    fields_.txtPathGlobal.setText(NullToText(row.Item(accountTable::kServerPath).Value()));
    fields_.txtUserNameDexo.setText(NullToText(row.Item(accountTable::kName).Value()));
    fields_.chbProgrammupdate.setValue(GiveCheckBoxValueForFORM(row.Item(accountTable::kProgUpdate).Value()));

    base::TextView path = fields_.txtPathGlobal.Text();
    if (path.ends_with(u'\\')) fields_.txtPathGlobal.setText(base::Text(path.substr(0, path.size() - 1)));

    const bool hasInitialPassword =
        NullToText(row.Item(accountTable::kPass).Value()) == accountTable::kStoredInitialPassword;
    fields_.cmbResetPWD.setEnabled(!hasInitialPassword);
    recordset->Close();
}

std::int16_t cBenutzerkonten::GiveCheckBoxValueForFORM(const base::Value& value) {
    const bool isTrue = std::visit(
        [](const auto& alternative) {
            using Alternative = std::remove_cvref_t<decltype(alternative)>;
            if constexpr (std::is_same_v<Alternative, bool>) {
                return alternative;
            } else if constexpr (std::is_arithmetic_v<Alternative>) {
                return alternative == static_cast<Alternative>(kTrue) && std::is_signed_v<Alternative>;
            } else {
                return false;
            }
        },
        value);
    return isTrue ? forms::CheckBox::kChecked : forms::CheckBox::kUnchecked;
}

std::unique_ptr<ado::Recordset> cBenutzerkonten::openRecordset(base::TextView statement, ado::LockType lockType) {
    auto recordset = connections_.createRecordset();
    recordset->Open(statement, objDB->Connection(), ado::CursorType::adOpenStatic, lockType, ado::adOptionUnspecified);
    return recordset;
}

}  // namespace tolv
