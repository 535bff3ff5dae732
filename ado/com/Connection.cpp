#include "ado/com/Connection.h"

namespace ado::com {

base::Text Connection::Provider() const {
    return object_.get(L"Provider").text();
}

void Connection::setProvider(base::TextView name) {
    object_.put(L"Provider", Variant(name));
}

void Connection::Open(base::TextView connectionString, base::TextView userId, base::TextView password,
                      std::int32_t options) {
    const Variant string(connectionString);
    const Variant user(userId);
    const Variant secret(password);
    const Variant how(options);
    object_.call(L"Open", {&string, &user, &secret, &how});
}

std::int32_t Connection::State() const {
    return object_.get(L"State").int32();
}

void Connection::Close() {
    object_.call(L"Close");
}

void Connection::Execute(base::TextView commandText) {
    const Variant text(commandText);
    // The first of the two optional arguments is a variable that ADO writes to; a "missing" value in its place could
    // not be written to, so both are left out. The call returns a record set, which is closed if the statement gives no
    // rows.
    object_.call(L"Execute", {&text});
}

}  // namespace ado::com
