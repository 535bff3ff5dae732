#include "tests/comdouble/ConnectionObject.h"

#include <algorithm>
#include <array>
#include <memory>
#include <set>
#include <utility>

#include "jet/sql/Execution.h"
#include "jet/sql/Parser.h"
#include "tests/comdouble/PropertyObjects.h"
#include "tests/comdouble/RecordsetObject.h"
#include "tests/comdouble/Refusal.h"
#include "tests/comdouble/Variants.h"

namespace comdouble {

namespace {

constexpr base::TextView kDefaultProvider = u"MSDASQL";
constexpr base::TextView kProvider = u"Microsoft.Jet.OLEDB.4.0";
constexpr std::array<base::TextView, ConnectionObject::kPropertyCount> kPropertyNames = {
    u"Data Source", u"Jet OLEDB:Database Password"};

constexpr std::int32_t kUnspecified = -1;

enum : DISPID {
    kConnectionProviderId = 101,
    kConnectionPropertiesId,
    kConnectionOpenId,
    kConnectionCloseId,
    kConnectionStateId,
    kConnectionExecuteId
};

constexpr Member kConnectionMembers[] = {
    {kConnectionProviderId, u"Provider", DISPATCH_PROPERTYGET | DISPATCH_PROPERTYPUT, 0, 0},
    {kConnectionPropertiesId, u"Properties", DISPATCH_PROPERTYGET, 0, 0},
    {kConnectionOpenId, u"Open", DISPATCH_METHOD, 0, 4},
    {kConnectionCloseId, u"Close", DISPATCH_METHOD, 0, 0},
    {kConnectionStateId, u"State", DISPATCH_PROPERTYGET, 0, 0},
    {kConnectionExecuteId, u"Execute", DISPATCH_METHOD, 1, 3},
};

std::set<ConnectionObject*>& living() {
    static std::set<ConnectionObject*> all;
    return all;
}

/// Where the number of rows is to go: nowhere, or into a variable, which is not modelled. What is given by value, a
/// missing argument too, cannot be written back.
void checkAffected(const Arguments& arguments) {
    if (arguments.count() < 2) return;
    throw Refusal((V_VT(&arguments.asGiven(1)) & VT_BYREF) != 0 ? E_NOTIMPL : DISP_E_TYPEMISMATCH, 1);
}

}  // namespace

ConnectionObject::ConnectionObject() : AutomationObject(u"Connection", kConnectionMembers) {
    living().insert(this);
}

ConnectionObject::~ConnectionObject() {
    living().erase(this);
}

ConnectionObject* ConnectionObject::of(IDispatch* object) {
    const auto found = std::ranges::find_if(
        living(), [object](ConnectionObject* connection) { return static_cast<IDispatch*>(connection) == object; });
    return found == living().end() ? nullptr : *found;
}

void ConnectionObject::add(RecordsetObject& recordset) {
    recordsets_.push_back(&recordset);
}

void ConnectionObject::remove(RecordsetObject& recordset) {
    std::erase(recordsets_, &recordset);
}

base::TextView ConnectionObject::propertyName(std::size_t place) {
    return kPropertyNames[place];
}

void ConnectionObject::setProperty(std::size_t place, base::Text value) {
    if (session_) throw adoError(AdoNumber::ObjectOpen);
    properties_[place] = std::move(value);
}

bool ConnectionObject::hasProvider() const {
    return base::equalsIgnoringAsciiCase(provider_, kProvider);
}

VARIANT ConnectionObject::call(DISPID id, const Arguments& arguments) {
    switch (id) {
        case kConnectionProviderId:
            return textVariant(provider_);
        case kConnectionPropertiesId:
            return properties();
        case kConnectionOpenId:
            open(arguments);
            return {};
        case kConnectionCloseId:
            close();
            return {};
        case kConnectionStateId:
            return numberVariant(session_ ? 1 : 0);
        default:
            return execute(arguments);
    }
}

/// Any text will do: whether there is such a provider shows when it is needed.
void ConnectionObject::put(DISPID /*id*/, const VARIANT& value) {
    if (V_VT(&value) != VT_BSTR) throw Refusal(DISP_E_TYPEMISMATCH, 0);
    if (session_) throw adoError(AdoNumber::ObjectOpen);
    provider_ = textOf(value);
}

VARIANT ConnectionObject::properties() {
    if (!hasProvider() && !base::equalsIgnoringAsciiCase(provider_, kDefaultProvider))
        throw adoError(AdoNumber::ProviderNotFound);
    return objectVariant(std::make_unique<PropertiesObject>(Ref(*this)).release());
}

void ConnectionObject::open(const Arguments& arguments) {
    const base::Text connectionString = arguments.text(0, {});
    const base::Text user = arguments.text(1, {});
    const base::Text password = arguments.text(2, {});
    const std::int32_t options = arguments.number(3, kUnspecified);
    if (session_) throw adoError(AdoNumber::ObjectOpen);
    if (options != kUnspecified) throw adoError(AdoNumber::InvalidArgument);
    if (!connectionString.empty()) throw Refusal(E_NOTIMPL, 0);
    if (base::equalsIgnoringAsciiCase(provider_, kDefaultProvider)) throw dataSourceNotFound();
    if (!hasProvider()) throw adoError(AdoNumber::ProviderNotFound);
    const bool isUsual = user.empty() || base::equalsIgnoringAsciiCase(user, u"Admin");
    if (!isUsual || !password.empty()) throw unknownUser();
    session_ = std::make_shared<Session>(properties_[0], properties_[1]);
}

void ConnectionObject::close() {
    if (!session_) throw adoError(AdoNumber::ObjectClosed);
    for (RecordsetObject* recordset : std::exchange(recordsets_, {}))
        recordset->closeWithConnection();
    session_.reset();
}

/// @return a closed record set: statements that give rows are not modelled
VARIANT ConnectionObject::execute(const Arguments& arguments) {
    const base::Text statement = arguments.text(0);
    checkAffected(arguments);
    if (arguments.number(2, kUnspecified) != kUnspecified) throw Refusal(E_NOTIMPL, 2);
    if (!session_) throw adoError(AdoNumber::ObjectClosed);
    const jet::sql::Statement parsed = jet::sql::parse(statement);
    if (std::holds_alternative<jet::sql::Select>(parsed)) throw Refusal(E_NOTIMPL, 0);
    jet::sql::execute(session_->forStatement(), parsed);
    return objectVariant(std::make_unique<RecordsetObject>().release());
}

}  // namespace comdouble
