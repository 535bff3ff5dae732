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

/// The account store: brings accounts from the table into the account window. Every operation opens a record
/// set of its own on the shared connection and closes it before it returns.
class cBenutzerkonten {
public:
    cBenutzerkonten(ado::ConnectionFactory& connections, const platform::Regional& regional, AccountFields fields)
        : connections_(connections), regional_(regional), fields_(fields) {}

    /// Empties the list and fills it with all accounts in the order of their names; selects none.
    void ShowBenKto(forms::ListView& listView);
    /// Loads one account into the window's fields. One backslash at the end of its path is not shown;
    /// resetting the password is possible unless it is still the initial one.
    /// @throws base::RuntimeError 3021 if the account is gone; the fields keep what they held
    void ShowBenKtoValues(std::int32_t id);
    /// Value of a check box: 1 for true (-1), 0 for all else, null and 1 included.
    static std::int16_t GiveCheckBoxValueForFORM(const base::Value& value);

private:
    std::unique_ptr<ado::Recordset> openRecordset(base::TextView statement, ado::LockType lockType);

    ado::ConnectionFactory& connections_;
    const platform::Regional& regional_;
    AccountFields fields_;
};

}  // namespace tolv
