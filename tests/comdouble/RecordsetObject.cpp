#include "tests/comdouble/RecordsetObject.h"

#include <memory>
#include <utility>

#include "tests/comdouble/FieldObjects.h"
#include "tests/comdouble/Refusal.h"
#include "tests/comdouble/Variants.h"

namespace comdouble {

namespace {

constexpr std::int32_t kUnspecified = -1;
constexpr std::int32_t kAsText = 1;
constexpr std::int32_t kOfUnknownKind = 8;

enum : DISPID {
    kRecordsetOpenId = 301,
    kRecordsetCloseId,
    kRecordsetStateId,
    kRecordsetRecordCountId,
    kRecordsetEofId,
    kRecordsetBofId,
    kRecordsetMoveNextId,
    kRecordsetFieldsId,
    kRecordsetAddNewId,
    kRecordsetUpdateId,
    kRecordsetCancelUpdateId,
    kRecordsetEditModeId,
    kRecordsetCursorTypeId,
    kRecordsetLockTypeId
};

constexpr Member kRecordsetMembers[] = {
    {kRecordsetOpenId, u"Open", DISPATCH_METHOD, 0, 5},
    {kRecordsetCloseId, u"Close", DISPATCH_METHOD, 0, 0},
    {kRecordsetStateId, u"State", DISPATCH_PROPERTYGET, 0, 0},
    {kRecordsetRecordCountId, u"RecordCount", DISPATCH_PROPERTYGET, 0, 0},
    {kRecordsetEofId, u"EOF", DISPATCH_PROPERTYGET, 0, 0},
    {kRecordsetBofId, u"BOF", DISPATCH_PROPERTYGET, 0, 0},
    {kRecordsetMoveNextId, u"MoveNext", DISPATCH_METHOD, 0, 0},
    {kRecordsetFieldsId, u"Fields", DISPATCH_PROPERTYGET, 0, 0},
    {kRecordsetAddNewId, u"AddNew", DISPATCH_METHOD, 0, 2},
    {kRecordsetUpdateId, u"Update", DISPATCH_METHOD, 0, 2},
    {kRecordsetCancelUpdateId, u"CancelUpdate", DISPATCH_METHOD, 0, 0},
    {kRecordsetEditModeId, u"EditMode", DISPATCH_PROPERTYGET, 0, 0},
    {kRecordsetCursorTypeId, u"CursorType", DISPATCH_PROPERTYGET, 0, 0},
    {kRecordsetLockTypeId, u"LockType", DISPATCH_PROPERTYGET, 0, 0},
};

Cursor::Lock lockOf(std::int32_t lockType) {
    switch (lockType) {
        case kUnspecified:
        case 1:
            return Cursor::Lock::ReadOnly;
        case 2:
            return Cursor::Lock::Pessimistic;
        case 3:
            return Cursor::Lock::Optimistic;
        case 4:
            throw Refusal(E_NOTIMPL, 3);
        default:
            throw adoError(AdoNumber::InvalidArgument);
    }
}

/// The provider has no dynamic cursor, and with an updatable lock no other than a keyset.
Cursor::Kind kindOf(std::int32_t cursorType, Cursor::Lock lock) {
    if (cursorType < kUnspecified || cursorType > 3) throw adoError(AdoNumber::InvalidArgument);
    const bool isKeyset = cursorType == 1 || cursorType == 2 || lock != Cursor::Lock::ReadOnly;
    if (isKeyset) return Cursor::Kind::Keyset;
    return cursorType == 3 ? Cursor::Kind::Snapshot : Cursor::Kind::ForwardOnly;
}

std::int32_t cursorTypeOf(Cursor::Kind kind) {
    if (kind == Cursor::Kind::ForwardOnly) return 0;
    return kind == Cursor::Kind::Keyset ? 1 : 3;
}

std::int32_t lockTypeOf(Cursor::Lock lock) {
    if (lock == Cursor::Lock::ReadOnly) return 1;
    return lock == Cursor::Lock::Pessimistic ? 2 : 3;
}

std::int32_t editModeOf(const Cursor& cursor) {
    if (cursor.isNewPending()) return 2;
    return cursor.isPending() ? 1 : 0;
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

void requireNoLists(const Arguments& arguments) {
    if (!arguments.isMissing(0) || !arguments.isMissing(1)) throw Refusal(E_NOTIMPL, 0);
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
        case kRecordsetAddNewId:
        case kRecordsetUpdateId:
            requireNoLists(arguments);
            return ofOpened(id);
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
        case kRecordsetBofId:
            return booleanVariant(cursor.isBof());
        case kRecordsetMoveNextId:
            cursor.moveNext();
            return {};
        case kRecordsetAddNewId:
            cursor.addNew();
            return {};
        case kRecordsetUpdateId:
            cursor.update();
            return {};
        case kRecordsetCancelUpdateId:
            cursor.cancelUpdate();
            return {};
        case kRecordsetEditModeId:
            return numberVariant(editModeOf(cursor));
        case kRecordsetCursorTypeId:
            return numberVariant(cursorTypeOf(cursor.kind()));
        case kRecordsetLockTypeId:
            return numberVariant(lockTypeOf(cursor.lock()));
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
    const Cursor::Lock lock = lockOf(lockType);
    const Cursor::Kind kind = kindOf(cursorType, lock);
    if (options != kUnspecified && options != kAsText && options != kOfUnknownKind)
        throw adoError(AdoNumber::InvalidArgument);
    openOn(connection, source, kind, lock);
}

void RecordsetObject::openOn(ConnectionObject& connection, base::TextView source, Cursor::Kind kind,
                             Cursor::Lock lock) {
    cursor_.emplace(connection.session(), source, kind, lock);
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
