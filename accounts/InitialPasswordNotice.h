#pragma once

#include "accounts/AccountTable.h"
#include "base/Text.h"

namespace tolv {

/// Tells the administrator the initial password of an account, after words that say what has happened to it.
inline base::Text initialPasswordNotice(base::TextView whatHappened) {
    return base::Text(whatHappened)
        .append(u"\r\n\r\n")
        .append(accountTable::kInitialPassword)
        .append(u"\r\n\r\nDer Anwender wird beim ersten Login aufgefordert dieses zu ändern.");
}

}  // namespace tolv
