#pragma once

#include <cstdint>
#include <memory>

#include "accounts/AccountFields.h"
#include "ado/Ado.h"
#include "base/Text.h"
#include "base/Value.h"
#include "forms/ListView.h"
#include "platform/Platform.h"

namespace tolv {

/// The account store: loads accounts from the table into the account window and saves the window's fields to the table.
/// Every operation opens its own record set on the shared connection and closes it before it returns. Errors go to the
/// caller; what was not stored before the error is not written.
class cBenutzerkonten {
public:
    cBenutzerkonten(ado::ConnectionFactory& connections, const platform::Regional& regional,
                    platform::MessageBoxes& messageBoxes, AccountFields fields)
        : connections_(connections), regional_(regional), messageBoxes_(messageBoxes), fields_(fields) {}

    /// Whether another account has the name in the window, as the database compares names.
    /// @param name  ignored: the text of the field counts, untrimmed
    /// @param id  the account's own ID, accountTable::kNewAccount if it has no row yet
    std::int16_t KontoSchonDa(base::TextView name, std::int32_t id);
    /// Stores the window's fields in the account's row, or in a new row if there is none with this ID. For
    /// accountTable::kNewAccount the row gets the initial password, which is announced before the row is stored.
    /// @return the row's ID
    std::int32_t SaveBenKto(std::int32_t id);
    /// Empties the list and fills it with all accounts, ordered by name; selects nothing.
    void ShowBenKto(forms::ListView& listView);
    /// Loads one account into the window's fields. One backslash at the end of its path is not shown. The button that
    /// resets the password is enabled unless the password is still the initial one.
    /// @throws base::RuntimeError 3021 if the account is gone; the fields keep what they held
    void ShowBenKtoValues(std::int32_t id);
    /// The value of a check box: 1 for true (-1), 0 for anything else, even for null and 1.
    static std::int16_t GiveCheckBoxValueForFORM(const base::Value& value);

private:
    void announceInitialPassword();
    void addRows(ado::Recordset& recordset, forms::ListView& listView) const;
    std::unique_ptr<ado::Recordset> openRecordset(base::TextView statement, ado::LockType lockType);

    ado::ConnectionFactory& connections_;
    const platform::Regional& regional_;
    platform::MessageBoxes& messageBoxes_;
    AccountFields fields_;
};

}  // namespace tolv
