#include "jet/sql/StaticCursor.h"

#include <algorithm>
#include <utility>

#include "jet/WriteErrors.h"
#include "jet/sql/Parser.h"
#include "jet/sql/SelectExecutor.h"
#include "jet/sql/SqlError.h"
#include "jet/transaction/Transaction.h"
#include "jet/value/ColumnConversion.h"

namespace jet::sql {

namespace {

Select parseSelect(base::TextView statement) {
    Statement parsed = parse(statement);
    auto* select = std::get_if<Select>(&parsed);
    if (select == nullptr) throw notUpdatable();
    return std::move(*select);
}

ResultSet read(Database& database, const Select& select) {
    auto operation = database.beginRead();
    return executeSelect(operation, select);
}

bool isSameColumn(const Column& a, const Column& b) {
    return a.number == b.number && a.type == b.type && a.name == b.name && a.lengthBytes == b.lengthBytes;
}

}  // namespace

StaticCursor::StaticCursor(Database& database, base::TextView statement)
    : StaticCursor(database, parseSelect(statement)) {}

StaticCursor::StaticCursor(Database& database, const Select& select)
    : table_(select.table), rows_(read(database, select)) {}

void StaticCursor::next() {
    ++current_;
    row_.reset();
}

const ResultRow& StaticCursor::row() const {
    if (!row_) {
        const auto found = written_.find(current_);
        row_.emplace(found != written_.end() ? found->second.row(0) : rows_.row(current_));
    }
    return *row_;
}

base::Value StaticCursor::value(std::size_t column) const {
    if (pending_)
        if (const base::Value* assigned = pending_->valueOf(rows_.column(column).number)) return *assigned;
    return row().value(column);
}

void StaticCursor::assign(std::size_t column, const base::Value& value) {
    const Column& assigned = rows_.column(column);
    if (assigned.isAutoNumber()) throw columnNotUpdatable(table_ + u"." + assigned.name);
    base::Value converted = convertToColumn(assigned, value);
    if (!pending_) pending_.emplace();
    pending_->assign(assigned.number, std::move(converted));
}

void StaticCursor::startRow(Database& database) {
    Transaction transaction(database);
    TableWriter writer(transaction, table_);
    requireSameColumns(writer.table().definition());
    RowOfValues started = writer.startRow();
    transaction.commit();
    pending_.emplace(std::move(started));
}

void StaticCursor::store(Database& database) {
    Transaction transaction(database);
    TableWriter writer(transaction, table_);
    requireSameColumns(writer.table().definition());
    const RowPointer place = put(writer);
    // Read before the commit, because the transaction's view of the file ends with it.
    ResultSet stored(writer.table().definition());
    stored.append(transaction, writer.table().rowAt(place));
    transaction.commit();
    if (pending_->isNew()) {
        current_ = rowCount();
        ++addedRows_;
    }
    row_.reset();
    written_.insert_or_assign(current_, std::move(stored));
    pending_.reset();
}

RowPointer StaticCursor::put(TableWriter& writer) const {
    if (pending_->isNew()) return writer.insert(pending_->started(), pending_->assignments());
    const RowPointer place = row().pointer();
    requireUnchanged(writer, place);
    writer.update(place, pending_->assignments());
    return place;
}

/// Another program may have changed the table's columns: values would get into the wrong ones.
void StaticCursor::requireSameColumns(const TableDefinition& now) const {
    const TableDefinition& then = rows_.definition();
    const bool isSame = then.page == now.page && std::ranges::equal(then.columns, now.columns, isSameColumn);
    if (!isSame) throw rowChanged();
}

void StaticCursor::requireUnchanged(const TableWriter& writer, RowPointer place) const {
    const auto now = writer.find(place);
    if (!now) throw rowDeleted();
    bool isSame = std::ranges::equal(now->view.bytes(), row().view().bytes());
    for (std::size_t column = 0; isSame && column < columnCount(); ++column)
        // The row's own bytes only hold the place of a long value.
        if (rows_.column(column).isLongValue())
            isSame = writer.table().value(now->view, rows_.column(column)) == row().value(column);
    if (!isSame) throw rowChanged();
}

}  // namespace jet::sql
