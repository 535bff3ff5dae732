#include "accounts/cBenutzerkonten.h"

#include <type_traits>
#include <variant>

#include "accounts/AccountId.h"
#include "accounts/AccountTable.h"
#include "app/mPublic.h"
#include "db/cDB.h"
#include "forms/CheckBox.h"
#include "forms/CommandButton.h"
#include "forms/TextBox.h"
#include "listutil/cFormularsteuerung.h"

namespace tolv {

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
