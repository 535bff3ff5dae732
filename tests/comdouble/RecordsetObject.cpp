#include "tests/comdouble/RecordsetObject.h"

#include <memory>
#include <utility>

#include "tests/comdouble/FieldObjects.h"
#include "tests/comdouble/Refusal.h"
#include "tests/comdouble/Variants.h"

namespace comdouble {

namespace {

constexpr std::int32_t kUnspecified = -1;
constexpr std::int32_t kStatic = 3;
constexpr std::int32_t kReadOnly = 1;
constexpr std::int32_t kPessimistic = 2;

enum : DISPID {
    kRecordsetOpenId = 301,
    kRecordsetCloseId,
    kRecordsetStateId,
    kRecordsetRecordCountId,
    kRecordsetEofId,
    kRecordsetMoveNextId,
    kRecordsetFieldsId,
    kRecordsetAddNewId,
    kRecordsetUpdateId
};

constexpr Member kRecordsetMembers[] = {
    {kRecordsetOpenId, u"Open", DISPATCH_METHOD, 0, 5},
    {kRecordsetCloseId, u"Close", DISPATCH_METHOD, 0, 0},
    {kRecordsetStateId, u"State", DISPATCH_PROPERTYGET, 0, 0},
    {kRecordsetRecordCountId, u"RecordCount", DISPATCH_PROPERTYGET, 0, 0},
    {kRecordsetEofId, u"EOF", DISPATCH_PROPERTYGET, 0, 0},
    {kRecordsetMoveNextId, u"MoveNext", DISPATCH_METHOD, 0, 0},
    {kRecordsetFieldsId, u"Fields", DISPATCH_PROPERTYGET, 0, 0},
    {kRecordsetAddNewId, u"AddNew", DISPATCH_METHOD, 0, 0},
    {kRecordsetUpdateId, u"Update", DISPATCH_METHOD, 0, 0},
};

/// Only a static cursor is modelled, and of the locks none and the pessimistic one.
Cursor::Lock lockOf(std::int32_t cursorType, std::int32_t lockType) {
    if (cursorType < kUnspecified || cursorType > 3 || lockType < kUnspecified || lockType > 4)
        throw adoError(AdoNumber::InvalidArgument);
    if (cursorType != kStatic) throw Refusal(E_NOTIMPL, 2);
    if (lockType == kReadOnly) return Cursor::Lock::ReadOnly;
    if (lockType == kPessimistic) return Cursor::Lock::Pessimistic;
    throw Refusal(E_NOTIMPL, 3);
}

base::Text statementIn(const Arguments& arguments) {
    const VARIANT source = arguments.at(0);
    if (V_VT(&source) != VT_BSTR) throw adoError(AdoNumber::InvalidArgument);
    return textOf(source);
}

/// A text in its place would open another connection, by the default provider; there is none to be had.
ConnectionObject& connectionIn(const Arguments& arguments) {
    const VARIANT given = arguments.isMissing(1) ? VARIANT{} : arguments.at(1);
    if (V_VT(&given) == VT_EMPTY || (V_VT(&given) == VT_DISPATCH && V_DISPATCH(&given) == nullptr))
        throw adoError(AdoNumber::InvalidConnection);
    if (V_VT(&given) == VT_BSTR) throw dataSourceNotFound();
    ConnectionObject* const connection =
        V_VT(&given) == VT_DISPATCH ? ConnectionObject::of(V_DISPATCH(&given)) : nullptr;
    if (connection == nullptr) throw adoError(AdoNumber::InvalidArgument);
    if (!connection->session()) throw adoError(AdoNumber::InvalidConnection);
    return *connection;
}

}  // namespace

RecordsetObject::RecordsetObject() : AutomationObject(u"Recordset", kRecordsetMembers) {}

RecordsetObject::~RecordsetObject() {
    if (connection_) connection_->remove(*this);
}

VARIANT RecordsetObject::call(DISPID id, const Arguments& arguments) {
    switch (id) {
        case kRecordsetOpenId:
            open(arguments);
            return {};
        case kRecordsetStateId:
            return numberVariant(isOpen() ? 1 : 0);
        case kRecordsetFieldsId:  // there also while it is closed, and empty then
            return objectVariant(std::make_unique<FieldsObject>(Ref(*this)).release());
        default:
            return ofOpened(id);
    }
}

VARIANT RecordsetObject::ofOpened(DISPID id) {
    Cursor& cursor = opened();
    switch (id) {
        case kRecordsetRecordCountId:
            return countVariant(cursor.recordCount());
        case kRecordsetEofId:
            return booleanVariant(cursor.isEof());
        case kRecordsetMoveNextId:
            cursor.moveNext();
            return {};
        case kRecordsetAddNewId:
            cursor.addNew();
            return {};
        case kRecordsetUpdateId:
            cursor.update();
            return {};
        default:
            close();
            return {};
    }
}

void RecordsetObject::open(const Arguments& arguments) {
    const std::int32_t cursorType = arguments.number(2, kUnspecified);
    const std::int32_t lockType = arguments.number(3, kUnspecified);
    const std::int32_t options = arguments.number(4, kUnspecified);
    if (isOpen()) throw adoError(AdoNumber::ObjectOpen);
    const base::Text source = statementIn(arguments);
    ConnectionObject& connection = connectionIn(arguments);
    const Cursor::Lock lock = lockOf(cursorType, lockType);
    if (options != kUnspecified) throw Refusal(E_NOTIMPL, 4);
    cursor_.emplace(connection.session(), source, lock);
    connection_ = Ref(connection);
    connection.add(*this);
}

void RecordsetObject::close() {
    if (opened().isPending()) throw adoError(AdoNumber::IllegalOperation);
    connection_->remove(*this);
    closeWithConnection();
}

void RecordsetObject::closeWithConnection() {
    cursor_.reset();
    connection_ = {};
}

Cursor& RecordsetObject::opened() {
    if (!cursor_) throw adoError(AdoNumber::ObjectClosed);
    return *cursor_;
}

}  // namespace comdouble
