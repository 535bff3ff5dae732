#pragma once

#include "base/Text.h"

namespace tolv {

/// The text shown before a sort, and the key of its list row.
struct SortRestoreEntry {
    base::Text Text;
    base::Text Key;
};

}  // namespace tolv
