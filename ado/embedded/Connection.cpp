#include "ado/embedded/Connection.h"

#include "ado/embedded/AdoError.h"
#include "jet/sql/Execution.h"

namespace ado::embedded {

namespace {

constexpr base::TextView kProvider = u"Microsoft.Jet.OLEDB.4.0";
constexpr base::TextView kDefaultUser = u"Admin";

}  // namespace

void Connection::setProvider(base::TextView name) {
    if (database_) throw adoError(AdoErrorNumber::ObjectOpen);
    if (!base::equalsIgnoringAsciiCase(name, kProvider)) throw adoError(AdoErrorNumber::ProviderNotFound);
    provider_ = name;
    properties_.create();
}

void Connection::Open(base::TextView connectionString, base::TextView userId, base::TextView password, std::int32_t) {
    if (database_) throw adoError(AdoErrorNumber::ObjectOpen);
    if (!base::equalsIgnoringAsciiCase(provider_, kProvider)) throw adoError(AdoErrorNumber::ProviderNotFound);
    if (!connectionString.empty()) throw adoError(AdoErrorNumber::InvalidArgument);
    const bool defaultUser = userId.empty() || base::equalsIgnoringAsciiCase(userId, kDefaultUser);
    if (!defaultUser || !password.empty()) throw invalidUser();
    database_ = std::make_shared<jet::Database>(jet::Database::open(
        storageOf_(properties_.dataSource()), properties_.databasePassword(), jet::LeftJournalRule::RollBack));
    properties_.setLocked(true);
}

void Connection::Close() {
    if (!database_) throw adoError(AdoErrorNumber::ObjectClosed);
    database_.reset();
    properties_.setLocked(false);
}

void Connection::Execute(base::TextView commandText) {
    if (!database_) throw adoError(AdoErrorNumber::ObjectClosed);
    jet::sql::execute(*database_, commandText);
}

}  // namespace ado::embedded
