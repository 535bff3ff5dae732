#pragma once

#include "base/Text.h"

namespace tolv {

/// A display text that a sort has set aside, and the key of the list row to which it belongs.
struct SortRestoreEntry {
    base::Text Text;
    base::Text Key;
};

}  // namespace tolv
