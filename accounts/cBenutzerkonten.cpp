#include "accounts/cBenutzerkonten.h"

#include <array>
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
namespace {

/// Whether a value of any type is the number -1, which means true.
struct IsTrue {
    bool operator()(bool value) const { return value; }
    bool operator()(std::uint8_t) const { return false; }
    bool operator()(std::int16_t value) const { return value == kTrue; }
    bool operator()(std::int32_t value) const { return value == kTrue; }
    bool operator()(float value) const { return value == float{kTrue}; }
    bool operator()(double value) const { return value == double{kTrue}; }
    bool operator()(base::Currency value) const { return value == base::Currency{-10'000}; }
    bool operator()(base::Date value) const { return value.days == double{kTrue}; }
    bool operator()(const base::Decimal& value) const {
        return value.negative && value.magnitude == tenToThe(value.scale);
    }
    template <class Other>
    bool operator()(const Other&) const {
        return false;  // null, text, bytes, GUID
    }

private:
    static std::array<std::uint32_t, 4> tenToThe(int power) {
        std::array<std::uint32_t, 4> words{1};
        for (; power > 0; --power) {
            std::uint64_t carry = 0;
            for (std::uint32_t& word : words) {
                carry += word * std::uint64_t{10};
                word = static_cast<std::uint32_t>(carry);
                carry >>= 32U;
            }
        }
        return words;
    }
};

}  // namespace

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
    if (recordset->RecordCount() == 0) recordset->AddNew();  // also if somebody has deleted the row
    ado::Fields& row = recordset->Fields();
    row.Item(accountTable::kName).setValue(fields_.txtUserNameDexo.Text());
    if (id == accountTable::kNewAccount) {
        row.Item(accountTable::kPass).setValue(base::Text(accountTable::kStoredInitialPassword));
        announceInitialPassword();
    }
    row.Item(accountTable::kProgUpdate).setValue(fields_.chbProgrammupdate.Value());
    row.Item(accountTable::kServerPath).setValue(base::Text(base::trimBlanks(fields_.txtPathGlobal.Text())));
    // Read before Update: the new row's number exists since AddNew.
    const std::int32_t savedId = accountId(row.Item(accountTable::kId).Value(), regional_);
    recordset->Update();
    recordset->Close();
    return savedId;
}

/// "Initialpasswwort" keeps its doubled w: administrators know the message that way.
void cBenutzerkonten::announceInitialPassword() {
    const base::Text created =
        u"Das Benutzerkonto '" + fields_.txtUserNameDexo.Text() + u"' wurde mit folgendem Initialpasswwort angelegt:";
    messageBoxes_.show(initialPasswordNotice(created), platform::MessageBoxes::Buttons::Ok,
                       platform::MessageBoxes::Icon::Information);
}

void cBenutzerkonten::ShowBenKto(forms::ListView& listView) {
    listView.clearRows();
    const auto recordset = openRecordset(accountTable::selectAll(), ado::LockType::adLockPessimistic);
    if (!recordset->isEOF()) addRows(*recordset, listView);
    recordset->Close();
    objForm->SetColWidth(listView, LVSCW_AUTOSIZE_USEHEADER);
}

void cBenutzerkonten::addRows(ado::Recordset& recordset, forms::ListView& listView) const {
    ado::Fields& fields = recordset.Fields();  // looked up once, not once for each of a million rows
    ado::Field& id = fields.Item(accountTable::kId);
    ado::Field& name = fields.Item(accountTable::kName);
    ado::Field& serverPath = fields.Item(accountTable::kServerPath);
    for (; !recordset.isEOF(); recordset.MoveNext()) {
        forms::ListItem item = listView.addRow();
        item.setText(objDB->GiveTextBoxValueForFORM(name.Value()));
        item.setTag(id.Value());
        item.setKey(accountTable::listKey(accountId(item.Tag(), regional_)));
        item.setSubItems(1, objDB->GiveTextBoxValueForFORM(serverPath.Value()));
    }
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
    return std::visit(IsTrue(), value) ? forms::CheckBox::kChecked : forms::CheckBox::kUnchecked;
}

std::unique_ptr<ado::Recordset> cBenutzerkonten::openRecordset(base::TextView statement, ado::LockType lockType) {
    auto recordset = connections_.createRecordset();
    recordset->Open(statement, objDB->Connection(), ado::CursorType::adOpenStatic, lockType, ado::adOptionUnspecified);
    return recordset;
}

}  // namespace tolv
