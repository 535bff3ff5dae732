#include "ado/embedded/Recordset.h"

#include "ado/embedded/AdoError.h"
#include "ado/embedded/Connection.h"
#include "jet/sql/SelectExecutor.h"

namespace ado::embedded {

void Recordset::Open(base::TextView source, ado::Connection& connection, CursorType, LockType lockType, std::int32_t) {
    if (rows_) throw adoError(AdoErrorNumber::ObjectOpen);
    auto* own = dynamic_cast<Connection*>(&connection);
    if (own == nullptr) throw adoError(AdoErrorNumber::InvalidArgument);
    if (own->database() == nullptr) throw adoError(AdoErrorNumber::InvalidConnection);
    auto operation = own->database()->beginRead();
    rows_.emplace(jet::sql::executeSelect(operation, source));
    fields_.emplace(*this);
    current_ = 0;
    lockType_ = lockType;
}

std::int32_t Recordset::RecordCount() const {
    return static_cast<std::int32_t>(opened().rowCount());
}

bool Recordset::isEOF() const {
    return current_ == opened().rowCount();
}

void Recordset::MoveNext() {
    if (isEOF()) throw adoError(AdoErrorNumber::NoCurrentRecord);
    ++current_;
}

ado::Fields& Recordset::Fields() {
    opened();
    return *fields_;
}

void Recordset::Close() {
    opened();
    fields_.reset();
    rows_.reset();
}

const jet::sql::ResultSet& Recordset::opened() const {
    if (!rows_) throw adoError(AdoErrorNumber::ObjectClosed);
    return *rows_;
}

void Recordset::refuseChange() const {
    opened();
    if (lockType_ == LockType::adLockReadOnly) throw adoError(AdoErrorNumber::FeatureNotAvailable);
    throw readOnlyObject();
}

base::Value Recordset::RowField::Value() const {
    if (rows_.isEOF()) throw adoError(AdoErrorNumber::NoCurrentRecord);
    return rows_.opened().value(rows_.current_, column_);
}

void Recordset::RowField::setValue(const base::Value&) {
    rows_.refuseChange();
}

Recordset::RowFields::RowFields(const Recordset& rows) {
    for (std::size_t column = 0; column < rows.opened().columnCount(); ++column)
        fields_.emplace_back(rows, column);
}

ado::Field& Recordset::RowFields::Item(base::TextView name) {
    for (RowField& field : fields_)
        if (base::equalsIgnoringAsciiCase(field.columnName(), name)) return field;
    throw adoError(AdoErrorNumber::ItemNotFound);
}

ado::Field& Recordset::RowFields::Item(std::int32_t index) {
    if (index < 0 || index >= Count()) throw adoError(AdoErrorNumber::ItemNotFound);
    return fields_[static_cast<std::size_t>(index)];
}

}  // namespace ado::embedded
