#include "accounts/AccountTable.h"

namespace tolv::accountTable {
namespace {

/// "SELECT * FROM Benutzerkonto", followed by the rest.
base::Text selectWhole(base::TextView rest) {
    return base::Text(u"SELECT * FROM ").append(kTable).append(rest);
}

}  // namespace

base::Text listKey(std::int32_t id) {
    return u"BenKto:" + base::decimal(id);
}

base::Text selectByName(base::TextView name) {
    return selectWhole(u" WHERE ").append(kName).append(u" = '").append(name).append(u"'");
}

base::Text selectOthersByName(base::TextView name, std::int32_t id) {
    return selectByName(name).append(u" AND NOT ").append(kId).append(u" = ").append(base::decimal(id));
}

base::Text selectById(std::int32_t id) {
    return selectWhole(u" WHERE ").append(kId).append(u" = ").append(base::decimal(id));
}

base::Text selectAll() {
    return selectWhole(u" ORDER BY ").append(kName);
}

base::Text updateToInitialPassword(base::TextView id) {
    return base::Text(u"UPDATE ")
        .append(kTable)
        .append(u" SET ")
        .append(kPass)
        .append(u" = '")
        .append(kStoredInitialPassword)
        .append(u"' WHERE ")
        .append(kId)
        .append(u" = ")
        .append(id);
}

base::Text deleteById(base::TextView id) {
    return base::Text(u"DELETE FROM ").append(kTable).append(u" WHERE ").append(kId).append(u" = ").append(id);
}

}  // namespace tolv::accountTable
