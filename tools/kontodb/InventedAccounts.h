#pragma once

#include <cstdint>
#include <string>
#include <unordered_set>

#include "base/Text.h"
#include "base/Value.h"
#include "tools/kontodb/Random.h"

namespace kontodb {

/// One row of the account table, without its number.
struct Account {
    base::Text name;
    base::Text password;     ///< 64 hexadecimal digits
    base::Value serverPath;  ///< text, or null
    bool programUpdate = false;
};

/// Invented German accounts, as many as are asked for. No two names are equal for the database, and the
/// same seed gives the same accounts everywhere.
class InventedAccounts {
public:
    explicit InventedAccounts(std::uint64_t seed) : random_(seed) {}

    Account next();

private:
    base::Text nextName();
    base::Text inventName(bool manyForms);
    base::Text inventPassword();
    base::Value inventPath();

    Random random_;
    std::unordered_set<std::string> usedNames_;  ///< by sort key
};

}  // namespace kontodb
