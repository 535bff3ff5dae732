#include "ado/embedded/Recordset.h"

#include <algorithm>
#include <utility>

#include "ado/embedded/AdoError.h"
#include "ado/embedded/Connection.h"
#include "jet/WriteErrors.h"
#include "jet/sql/Parser.h"
#include "jet/sql/SelectExecutor.h"
#include "jet/sql/SqlError.h"
#include "jet/transaction/Transaction.h"
#include "jet/value/ColumnConversion.h"

namespace ado::embedded {

namespace {

constexpr auto kKind = jet::WriteKind::Recordset;

bool isSameColumn(const jet::Column& a, const jet::Column& b) {
    return a.number == b.number && a.type == b.type && a.name == b.name && a.lengthBytes == b.lengthBytes;
}

}  // namespace

void Recordset::Open(base::TextView source, ado::Connection& connection, CursorType, LockType lockType, std::int32_t) {
    if (rows_) throw adoError(AdoErrorNumber::ObjectOpen);
    auto* own = dynamic_cast<Connection*>(&connection);
    if (own == nullptr) throw adoError(AdoErrorNumber::InvalidArgument);
    if (own->database() == nullptr) throw adoError(AdoErrorNumber::InvalidConnection);
    const jet::sql::Statement statement = jet::sql::parse(source);
    const auto* select = std::get_if<jet::sql::Select>(&statement);
    if (select == nullptr) throw jet::sql::notUpdatable();
    auto operation = own->database()->beginRead();
    rows_.emplace(jet::sql::executeSelect(operation, *select));
    fields_.emplace(*this);
    current_ = 0;
    table_ = select->table;
    database_ = own->database();
    lockType_ = lockType;
}

std::int32_t Recordset::RecordCount() const {
    return static_cast<std::int32_t>(rowCount());
}

bool Recordset::isEOF() const {
    return current_ == rowCount() && !isNewRowPending();
}

void Recordset::MoveNext() {
    if (isEOF()) throw adoError(AdoErrorNumber::NoCurrentRecord);
    if (pending_) Update();
    ++current_;
}

ado::Fields& Recordset::Fields() {
    opened();
    return *fields_;
}

void Recordset::AddNew() {
    requireUpdatable();
    if (pending_) Update();
    const auto database = openDatabase();
    jet::Transaction transaction(*database, kKind);
    jet::TableWriter writer(transaction, table_, kKind);
    requireSameColumns(writer.table().definition());
    jet::RowOfValues started = writer.startRow();
    transaction.commit();
    pending_.emplace(std::move(started));
}

void Recordset::Update() {
    requireUpdatable();
    if (!pending_) return;
    const auto database = openDatabase();
    jet::Transaction transaction(*database, kKind);
    jet::TableWriter writer(transaction, table_, kKind);
    requireSameColumns(writer.table().definition());
    const jet::RowPointer place = store(writer);
    // Read before the commit, because the transaction's view of the file ends with it.
    jet::sql::ResultSet stored(writer.table().definition());
    stored.append(transaction, writer.table().rowAt(place));
    transaction.commit();
    if (pending_->isNew()) {
        current_ = rowCount();
        ++addedRows_;
    }
    written_.insert_or_assign(current_, std::move(stored));
    pending_.reset();
}

jet::RowPointer Recordset::store(jet::TableWriter& writer) const {
    if (pending_->isNew()) return writer.insert(pending_->started(), pending_->assignments());
    const jet::RowPointer place = row(current_).pointer();
    requireUnchanged(writer, place);
    writer.update(place, pending_->assignments());
    return place;
}

/// Another program may have changed the table's columns: values would get into the wrong ones.
void Recordset::requireSameColumns(const jet::TableDefinition& now) const {
    const jet::TableDefinition& then = rows_->definition();
    const bool isSame = then.page == now.page && std::equal(then.columns.begin(), then.columns.end(),
                                                            now.columns.begin(), now.columns.end(), isSameColumn);
    if (!isSame) throw rowChanged();
}

void Recordset::requireUnchanged(const jet::TableWriter& writer, jet::RowPointer place) const {
    const auto now = writer.find(place);
    if (!now) throw rowDeleted();
    const auto then = row(current_);
    bool isSame = std::ranges::equal(now->view.bytes(), then.view().bytes());
    for (std::size_t column = 0; isSame && column < rows_->columnCount(); ++column)
        // The row's own bytes only hold the place of a long value.
        if (rows_->column(column).isLongValue())
            isSame = writer.table().value(now->view, rows_->column(column)) == then.value(column);
    if (!isSame) throw rowChanged();
}

void Recordset::Close() {
    opened();
    if (pending_) throw adoError(AdoErrorNumber::IllegalOperation);
    fields_.reset();
    rows_.reset();
    written_.clear();
    addedRows_ = 0;
}

jet::sql::ResultRow Recordset::row(std::size_t row) const {
    const auto found = written_.find(row);
    return found != written_.end() ? found->second.row(0) : opened().row(row);
}

const jet::sql::ResultSet& Recordset::opened() const {
    if (!rows_) throw adoError(AdoErrorNumber::ObjectClosed);
    return *rows_;
}

void Recordset::requireUpdatable() const {
    opened();
    const bool isUpdatable = lockType_ == LockType::adLockPessimistic || lockType_ == LockType::adLockOptimistic;
    if (!isUpdatable) throw adoError(AdoErrorNumber::FeatureNotAvailable);
}

std::shared_ptr<jet::Database> Recordset::openDatabase() const {
    auto database = database_.lock();
    if (!database) throw adoError(AdoErrorNumber::InvalidConnection);
    return database;
}

base::Value Recordset::RowField::Value() const {
    if (rows_.isEOF()) throw adoError(AdoErrorNumber::NoCurrentRecord);
    if (rows_.pending_)
        if (const base::Value* value = rows_.pending_->valueOf(column().number)) return *value;
    return rows_.row(rows_.current_).value(column_);
}

void Recordset::RowField::setValue(const base::Value& value) {
    rows_.requireUpdatable();
    if (rows_.isEOF()) throw adoError(AdoErrorNumber::NoCurrentRecord);
    if (column().isAutoNumber()) throw jet::columnNotUpdatable(kKind, rows_.table_ + u"." + column().name);
    base::Value converted = jet::convertToColumn(column(), value, kKind);
    if (!rows_.pending_) rows_.pending_.emplace();
    rows_.pending_->assign(column().number, std::move(converted));
}

Recordset::RowFields::RowFields(Recordset& rows) {
    for (std::size_t column = 0; column < rows.opened().columnCount(); ++column)
        fields_.emplace_back(rows, column);
}

ado::Field& Recordset::RowFields::Item(base::TextView name) {
    for (RowField& field : fields_)
        if (base::equalsIgnoringAsciiCase(field.column().name, name)) return field;
    throw adoError(AdoErrorNumber::ItemNotFound);
}

ado::Field& Recordset::RowFields::Item(std::int32_t index) {
    if (index < 0 || index >= Count()) throw adoError(AdoErrorNumber::ItemNotFound);
    return fields_[static_cast<std::size_t>(index)];
}

}  // namespace ado::embedded
