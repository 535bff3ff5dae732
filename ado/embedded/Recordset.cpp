#include "ado/embedded/Recordset.h"

#include "ado/embedded/AdoError.h"
#include "ado/embedded/Connection.h"

namespace ado::embedded {

namespace {

template <typename Change>
void changing(Change&& change) {
    try {
        change();
    } catch (const jet::WriteRefused& refused) {
        throw recordsetError(refused);
    }
}

}  // namespace

void Recordset::Open(base::TextView source, ado::Connection& connection, CursorType, LockType lockType, std::int32_t) {
    if (rows_) throw adoError(AdoErrorNumber::ObjectOpen);
    auto* own = dynamic_cast<Connection*>(&connection);
    if (own == nullptr) throw adoError(AdoErrorNumber::InvalidArgument);
    if (own->database() == nullptr) throw adoError(AdoErrorNumber::InvalidConnection);
    rows_.emplace(*own->database(), source);
    fields_.emplace(*this, rows_->columnCount());
    database_ = own->database();
    lockType_ = lockType;
}

std::int32_t Recordset::RecordCount() const {
    return static_cast<std::int32_t>(opened().rowCount());
}

bool Recordset::isEOF() const {
    return opened().isAtEnd();
}

void Recordset::MoveNext() {
    if (isEOF()) throw adoError(AdoErrorNumber::NoCurrentRecord);
    if (rows_->isPending()) Update();
    rows_->next();
}

ado::Fields& Recordset::Fields() {
    opened();
    return *fields_;
}

void Recordset::AddNew() {
    auto& rows = updatable();
    if (rows.isPending()) Update();
    changing([&] { rows.startRow(*openDatabase()); });
}

void Recordset::Update() {
    auto& rows = updatable();
    if (rows.isPending()) changing([&] { rows.store(*openDatabase()); });
}

void Recordset::Close() {
    if (opened().isPending()) throw adoError(AdoErrorNumber::IllegalOperation);
    fields_.reset();
    rows_.reset();
}

const jet::sql::StaticCursor& Recordset::opened() const {
    if (!rows_) throw adoError(AdoErrorNumber::ObjectClosed);
    return *rows_;
}

jet::sql::StaticCursor& Recordset::updatable() {
    opened();
    const bool isUpdatable = lockType_ == LockType::adLockPessimistic || lockType_ == LockType::adLockOptimistic;
    if (!isUpdatable) throw adoError(AdoErrorNumber::FeatureNotAvailable);
    return *rows_;
}

std::shared_ptr<jet::Database> Recordset::openDatabase() const {
    auto database = database_.lock();
    if (!database) throw adoError(AdoErrorNumber::InvalidConnection);
    return database;
}

base::Value Recordset::RowField::Value() const {
    if (rows_.isEOF()) throw adoError(AdoErrorNumber::NoCurrentRecord);
    return rows_.rows_->value(column_);
}

void Recordset::RowField::setValue(const base::Value& value) {
    auto& rows = rows_.updatable();
    if (rows.isAtEnd()) throw adoError(AdoErrorNumber::NoCurrentRecord);
    changing([&] { rows.assign(column_, value); });
}

Recordset::RowFields::RowFields(Recordset& rows, std::size_t count) {
    for (std::size_t column = 0; column < count; ++column)
        fields_.emplace_back(rows, column);
}

ado::Field& Recordset::RowFields::Item(base::TextView name) {
    for (RowField& field : fields_)
        if (base::equalsIgnoringAsciiCase(field.Name(), name)) return field;
    throw adoError(AdoErrorNumber::ItemNotFound);
}

ado::Field& Recordset::RowFields::Item(std::int32_t index) {
    if (index < 0 || index >= Count()) throw adoError(AdoErrorNumber::ItemNotFound);
    return fields_[static_cast<std::size_t>(index)];
}

}  // namespace ado::embedded
