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

/// The account store: brings accounts from the table into the account window, and from its fields into the
/// table. Every operation opens a record set of its own on the shared connection and closes it before it
/// returns; errors pass, and what was not stored by then is not written.
class cBenutzerkonten {
public:
    cBenutzerkonten(ado::ConnectionFactory& connections, const platform::Regional& regional,
                    platform::MessageBoxes& messageBoxes, AccountFields fields)
        : connections_(connections), regional_(regional), messageBoxes_(messageBoxes), fields_(fields) {}

    /// Whether another account bears the name in the window, as the database compares names.
    /// @param name  not looked at: what counts is the text of the field, not trimmed
    /// @param id  the account's own ID, accountTable::kNewAccount if it has no row yet
    std::int16_t KontoSchonDa(base::TextView name, std::int32_t id);
    /// Stores the window's fields as the account's row, as a new one if there is none with this ID. For
    /// accountTable::kNewAccount the row gets the initial password, which is announced before it is stored.
    /// @return the row's ID
    std::int32_t SaveBenKto(std::int32_t id);
    /// Empties the list and fills it with all accounts in the order of their names; selects none.
    void ShowBenKto(forms::ListView& listView);
    /// Loads one account into the window's fields. One backslash at the end of its path is not shown;
    /// resetting the password is possible unless it is still the initial one.
    /// @throws base::RuntimeError 3021 if the account is gone; the fields keep what they held
    void ShowBenKtoValues(std::int32_t id);
    /// Value of a check box: 1 for true (-1), 0 for all else, null and 1 included.
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
