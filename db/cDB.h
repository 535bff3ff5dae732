#pragma once

#include <memory>

#include "ado/Ado.h"
#include "base/Text.h"
#include "base/Value.h"
#include "platform/Platform.h"

namespace tolv {

/// The one connection to the account file BenKTO.mdb. It is open for the whole life of this object and never closed or
/// replaced meanwhile. Also converts values between fields and controls.
class cDB {
public:
    /// Opens the account file in the folder that objINI names.
    /// @throws base::RuntimeError with the provider's number if that fails
    cDB(ado::ConnectionFactory& connections, const platform::Regional& regional);
    ~cDB();
    cDB(const cDB&) = delete;
    cDB& operator=(const cDB&) = delete;

    /// For statements and record sets; only cDB opens and closes it.
    ado::Connection& Connection() const { return *connection_; }

    /// Null gives empty text, anything else its text in the user's regional format; not trimmed.
    base::Text GiveTextBoxValueForFORM(base::Value value) const;
    /// The text without blanks at both ends; null if nothing is left. Tabs and line ends are not blanks.
    base::Value GiveTextBoxValueForDB(const base::Text& text) const;

private:
    const platform::Regional& regional_;
    std::unique_ptr<ado::Connection> connection_;
};

}  // namespace tolv
