#include "ado/com/Recordset.h"

#include <cassert>

#include "ado/com/Connection.h"

namespace ado::com {

void Recordset::Open(base::TextView source, ado::Connection& connection, CursorType cursorType, LockType lockType,
                     std::int32_t options) {
    const auto* own = dynamic_cast<Connection*>(&connection);
    assert(own != nullptr);
    const Variant statement(source);
    // The object itself: a connection string would open a second connection.
    const Variant over(own->object().dispatch());
    const Variant cursor(static_cast<std::int32_t>(cursorType));
    const Variant lock(static_cast<std::int32_t>(lockType));
    const Variant how(options);
    object_.call(L"Open", {&statement, &over, &cursor, &lock, &how});
}

std::int32_t Recordset::State() const {
    return object_.get(L"State").int32();
}

std::int32_t Recordset::RecordCount() const {
    return object_.get(L"RecordCount").int32();
}

bool Recordset::isEOF() const {
    return object_.get(L"EOF").boolean();
}

void Recordset::MoveNext() {
    object_.call(L"MoveNext");
}

ado::Fields& Recordset::Fields() {
    if (!fields_) fields_.emplace(object_.get(L"Fields").object());
    return *fields_;
}

void Recordset::AddNew() {
    object_.call(L"AddNew");
}

void Recordset::Update() {
    object_.call(L"Update");
}

void Recordset::Close() {
    object_.call(L"Close");
    fields_.reset();
}

base::Text Recordset::RowField::Name() const {
    return object_.get(L"Name").text();
}

base::Value Recordset::RowField::Value() const {
    return object_.get(L"Value").value();
}

void Recordset::RowField::setValue(const base::Value& value) {
    object_.put(L"Value", Variant(value));
}

std::int32_t Recordset::RowFields::Count() const {
    return object_.get(L"Count").int32();
}

ado::Field& Recordset::RowFields::Item(base::TextView name) {
    const auto known = byName_.find(name);
    if (known != byName_.end()) return known->second;
    return byName_.try_emplace(base::Text(name), object_.get(L"Item", Variant(name)).object()).first->second;
}

ado::Field& Recordset::RowFields::Item(std::int32_t index) {
    const auto known = byIndex_.find(index);
    if (known != byIndex_.end()) return known->second;
    return byIndex_.try_emplace(index, object_.get(L"Item", Variant(index)).object()).first->second;
}

}  // namespace ado::com
