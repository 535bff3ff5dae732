#pragma once

#include "accounts/AccountTable.h"
#include "base/Text.h"

namespace tolv {

/// The text that tells the administrator an account's initial password, after a sentence about what has happened.
inline base::Text initialPasswordNotice(base::TextView whatHappened) {
    return base::Text(whatHappened)
        .append(u"\r\n\r\n")
        .append(accountTable::kInitialPassword)
        .append(u"\r\n\r\nDer Anwender wird beim ersten Login aufgefordert dieses zu ändern.");
}

}  // namespace tolv
