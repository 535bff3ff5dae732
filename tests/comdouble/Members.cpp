#include "tests/comdouble/Members.h"

#include "ado/embedded/AdoError.h"
#include "ado/embedded/Recordset.h"
#include "tests/comdouble/AutomationObject.h"

namespace comdouble {

namespace {

using ado::com::Variant;
using ado::embedded::adoError;
using ado::embedded::AdoErrorNumber;

/// To be called for each operation that uses the file.
void countStatement() {
    auto& left = state().faults.statementsUntilDeath;
    if (left == 0) throw base::RuntimeError(E_FAIL, u"Datenträger- oder Netzwerkfehler.");
    if (left) --*left;
}

void requireUnspecified(const Variant& options) {
    if (options.int32() != ado::adOptionUnspecified) fail({.result = E_NOTIMPL});
}

Variant object(base::TextView className, Subject subject) {
    return AutomationObject::create(className, std::move(subject));
}

Variant item(base::TextView className, const Subject& of, base::Text name) {
    return object(className, {of.connection, of.recordset, std::move(name)});
}

Variant provider(Subject& on, const Arguments&) {
    return Variant(base::TextView{on.connection->Provider()});
}

Variant putProvider(Subject& on, const Arguments& with) {
    on.connection->setProvider(with[0].text());
    return {};
}

Variant openConnection(Subject& on, const Arguments& with) {
    requireUnspecified(with[3]);
    on.connection->Open(with[0].text(), with[1].text(), with[2].text(), with[3].int32());
    return {};
}

Variant execute(Subject& on, const Arguments& with) {
    requireUnspecified(with[2]);
    countStatement();
    on.connection->Execute(with[0].text());
    return object(u"Recordset", {.recordset = std::make_shared<ado::embedded::Recordset>()});
}

Variant propertyItem(Subject& on, const Arguments& with) {
    static_cast<void>(on.connection->Properties().Item(with[0].text()));
    return item(u"Property", on, with[0].text());
}

Variant propertyValue(Subject& on, const Arguments&) {
    return Variant(on.connection->Properties().Item(on.name).Value());
}

Variant putProperty(Subject& on, const Arguments& with) {
    on.connection->Properties().Item(on.name).setValue(with[0].value());
    return {};
}

/// Refuses a connection string instead of a connection: it would open another connection.
Variant openRecordset(Subject& on, const Arguments& with) {
    const Subject* over = with[1].raw().vt == VT_DISPATCH ? AutomationObject::subjectOf(with[1].object()) : nullptr;
    if (with[0].raw().vt != VT_BSTR || over == nullptr || over->recordset)
        throw adoError(AdoErrorNumber::InvalidArgument);
    const auto cursor = static_cast<ado::CursorType>(with[2].int32());
    const auto lock = static_cast<ado::LockType>(with[3].int32());
    const bool isUsed = cursor == ado::CursorType::adOpenStatic &&
                        (lock == ado::LockType::adLockReadOnly || lock == ado::LockType::adLockPessimistic);
    if (!isUsed) fail({.result = E_NOTIMPL});
    requireUnspecified(with[4]);
    countStatement();
    on.recordset->Open(with[0].text(), *over->connection, cursor, lock, with[4].int32());
    on.connection = over->connection;
    return {};
}

Variant recordCount(Subject& on, const Arguments&) {
    return Variant(on.recordset->RecordCount());
}

Variant isEof(Subject& on, const Arguments&) {
    return Variant(base::Value(on.recordset->isEOF()));
}

/// The tool never passes arguments here.
void requireNone(const Arguments& with) {
    if (with[0].raw().vt != VT_EMPTY || with[1].raw().vt != VT_EMPTY) fail({.result = E_NOTIMPL});
}

Variant addNew(Subject& on, const Arguments& with) {
    requireNone(with);
    countStatement();
    on.recordset->AddNew();
    return {};
}

Variant update(Subject& on, const Arguments& with) {
    requireNone(with);
    countStatement();
    on.recordset->Update();
    return {};
}

Variant fieldItem(Subject& on, const Arguments& with) {
    ado::Fields& fields = on.recordset->Fields();
    if (with[0].raw().vt == VT_I4) return item(u"Field", on, fields.Item(with[0].int32()).Name());
    if (with[0].raw().vt != VT_BSTR) fail({.result = E_NOTIMPL});
    return item(u"Field", on, fields.Item(with[0].text()).Name());
}

Variant fieldValue(Subject& on, const Arguments&) {
    // Read even if another value is delivered instead: the column must exist.
    const base::Value value = on.recordset->Fields().Item(on.name).Value();
    const auto odd = state().faults.oddValues.find(on.name);
    if (odd == state().faults.oddValues.end()) return Variant(value);
    Variant delivered;
    *delivered.out() = odd->second();
    return delivered;
}

Variant putFieldValue(Subject& on, const Arguments& with) {
    on.recordset->Fields().Item(on.name).setValue(with[0].value());
    return {};
}

constexpr WORD kCall = DISPATCH_METHOD;
constexpr WORD kGet = DISPATCH_PROPERTYGET;
constexpr WORD kPut = DISPATCH_PROPERTYPUT;
constexpr VARTYPE kNone = VT_VOID;
constexpr VARTYPE kPointerWide = sizeof(void*) == 8 ? VT_I8 : VT_I4;
constexpr Member::Parameter kText{VT_BSTR};
constexpr Member::Parameter kAny{VT_VARIANT};
constexpr Member::Parameter kOptText{VT_BSTR, true};
constexpr Member::Parameter kOptNumber{VT_I4, true};
constexpr Member::Parameter kOptAny{VT_VARIANT, true};
constexpr Member::Parameter kOptVariable{VT_VARIANT | VT_BYREF, true};

using On = Subject&;
using With = const Arguments&;

const std::vector<Member> kMembers = {
    {u"Connection", u"Provider", kGet, {}, VT_BSTR, provider},
    {u"Connection", u"Provider", kPut, {kText}, kNone, putProvider},
    {u"Connection", u"Properties", kGet, {}, VT_DISPATCH, [](On on, With) { return object(u"Properties", on); }},
    {u"Connection", u"State", kGet, {}, VT_I4, [](On on, With) { return Variant(on.connection->State()); }},
    {u"Connection", u"Open", kCall, {kOptText, kOptText, kOptText, kOptNumber}, kNone, openConnection},
    {u"Connection", u"Execute", kCall, {kText, kOptVariable, kOptNumber}, VT_DISPATCH, execute},
    {u"Connection", u"Close", kCall, {}, kNone, [](On on, With) { return on.connection->Close(), Variant(); }},

    {u"Properties", u"Item", kGet, {kAny}, VT_DISPATCH, propertyItem},
    {u"Property", u"Value", kGet, {}, VT_VARIANT, propertyValue},
    {u"Property", u"Value", kPut, {kAny}, kNone, putProperty},

    {u"Recordset", u"Open", kCall, {kOptAny, kOptAny, kOptNumber, kOptNumber, kOptNumber}, kNone, openRecordset},
    {u"Recordset", u"State", kGet, {}, VT_I4, [](On on, With) { return Variant(on.recordset->State()); }},
    {u"Recordset", u"RecordCount", kGet, {}, kPointerWide, recordCount},
    {u"Recordset", u"EOF", kGet, {}, VT_BOOL, isEof},
    {u"Recordset", u"MoveNext", kCall, {}, kNone, [](On on, With) { return on.recordset->MoveNext(), Variant(); }},
    {u"Recordset", u"Fields", kGet, {}, VT_DISPATCH, [](On on, With) { return object(u"Fields", on); }},
    {u"Recordset", u"AddNew", kCall, {kOptAny, kOptAny}, kNone, addNew},
    {u"Recordset", u"Update", kCall, {kOptAny, kOptAny}, kNone, update},
    {u"Recordset", u"Close", kCall, {}, kNone, [](On on, With) { return on.recordset->Close(), Variant(); }},

    {u"Fields", u"Count", kGet, {}, VT_I4, [](On on, With) { return Variant(on.recordset->Fields().Count()); }},
    {u"Fields", u"Item", kGet, {kAny}, VT_DISPATCH, fieldItem},
    {u"Field", u"Name", kGet, {}, VT_BSTR, [](On on, With) { return Variant(base::TextView{on.name}); }},
    {u"Field", u"Value", kGet, {}, VT_VARIANT, fieldValue},
    {u"Field", u"Value", kPut, {kAny}, kNone, putFieldValue},
};

}  // namespace

const std::vector<Member>& members() {
    return kMembers;
}

}  // namespace comdouble
