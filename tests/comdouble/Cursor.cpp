#include "tests/comdouble/Cursor.h"

#include <algorithm>

#include "jet/ColumnConversion.h"
#include "jet/DataPage.h"
#include "jet/WriteErrors.h"
#include "jet/sql/Parser.h"
#include "jet/sql/SelectExecutor.h"
#include "jet/sql/SqlError.h"
#include "jet/sql/TableExpressions.h"
#include "tests/comdouble/Refusal.h"
#include "tests/comdouble/State.h"

namespace comdouble {

namespace {

constexpr auto kKind = jet::WriteKind::Recordset;

const jet::sql::TableExpressions& expressions() {
    static const jet::sql::TableExpressions reader;
    return reader;
}

base::Text tableOf(base::TextView source) {
    const jet::sql::Statement statement = jet::sql::parse(source);
    const auto* select = std::get_if<jet::sql::Select>(&statement);
    if (select == nullptr) throw jet::sql::notUpdatable();
    return select->table;
}

jet::sql::ResultSet select(jet::Database& database, base::TextView source) {
    auto operation = database.beginRead();
    return jet::sql::executeSelect(operation, source);
}

/// Nothing if the place holds no row of the table any more.
std::optional<jet::Row> rowThere(const jet::Table& table, jet::RowPointer place) {
    const auto page = jet::DataPage::read(table.source(), place.page, table.definition().page);
    if (place.slot >= page.slotCount()) return std::nullopt;
    const jet::SlotState state = page.slot(place.slot).state;
    if (state != jet::SlotState::Live && state != jet::SlotState::Moved) return std::nullopt;
    return table.rowAt(place);
}

jet::Table tableThere(jet::PageSource& source, base::TextView name) {
    auto table = jet::openTable(source, name);
    if (!table) throw jet::tableNotFound(name);
    return std::move(*table);
}

}  // namespace

Cursor::Cursor(std::shared_ptr<Session> session, base::TextView source, Lock lock)
    : session_(std::move(session)),
      table_(tableOf(source)),
      lock_(lock),
      rows_(select(session_->forStatement(), source)) {
    for (std::size_t row = 0; row < rows_.rowCount(); ++row)
        keys_.push_back(rows_.pointer(row));
    fetch();
}

std::size_t Cursor::reachable() const {
    const auto missing = static_cast<std::size_t>(state().faults.missingRows);
    return count() - std::min(count(), missing);
}

void Cursor::requireUpdatable() const {
    if (lock_ == Lock::ReadOnly) throw adoError(AdoNumber::FeatureNotAvailable);
}

/// Reads the row that has become the current one.
void Cursor::fetch() {
    image_.reset();
    if (lock_ == Lock::ReadOnly || isEof()) return;
    auto operation = session_->forFetch().beginRead();
    const jet::Table table = tableThere(operation, table_);
    if (const auto row = rowThere(table, keys_[current_])) image_.emplace(imageOf(operation, *row));
}

jet::sql::ResultSet Cursor::imageOf(jet::PageSource& source, const jet::Row& row) const {
    jet::sql::ResultSet image(rows_.definition());
    image.append(source, row);
    return image;
}

void Cursor::moveNext() {
    if (isEof()) throw adoError(AdoNumber::NoCurrentRecord);
    if (isPending()) update();
    ++current_;
    fetch();
}

base::Value Cursor::value(std::size_t place) const {
    if (isEof()) throw adoError(AdoNumber::NoCurrentRecord);
    const std::uint16_t number = column(place).number;
    for (const jet::Assignment& assignment : assignments_)
        if (assignment.column == number) return assignment.value;
    if (started_) return started_->at(number);
    if (lock_ == Lock::ReadOnly) return rows_.value(current_, place);
    if (!image_) throw rowDeleted();
    return image_->value(0, place);
}

void Cursor::assign(std::size_t place, const base::Value& value) {
    requireUpdatable();
    if (isEof()) throw adoError(AdoNumber::NoCurrentRecord);
    const jet::Column& target = column(place);
    if (target.isAutoNumber()) throw jet::columnNotUpdatable(kKind, table_ + u"." + target.name);
    base::Value converted = jet::convertToColumn(target, value, kKind);
    if (!isPending()) requireUnchanged();
    std::erase_if(assignments_, [&](const jet::Assignment& earlier) { return earlier.column == target.number; });
    assignments_.push_back({target.number, std::move(converted)});
}

void Cursor::addNew() {
    requireUpdatable();
    if (isPending()) update();
    jet::Transaction transaction(session_->forStatement(), kKind);
    jet::TableWriter writer(transaction, table_, kKind, expressions());
    jet::RowOfValues started = writer.startRow();
    transaction.commit();
    started_.emplace(std::move(started));
}

void Cursor::update() {
    requireUpdatable();
    if (!isPending()) return;
    jet::Transaction transaction(session_->forStatement(), kKind);
    jet::TableWriter writer(transaction, table_, kKind, expressions());
    const jet::RowPointer place = store(writer);
    jet::sql::ResultSet stored = imageOf(transaction, writer.table().rowAt(place));
    transaction.commit();
    if (isNewPending()) {
        keys_.push_back(place);
        current_ = count() - 1;
    }
    started_.reset();
    assignments_.clear();
    image_.emplace(std::move(stored));
}

jet::RowPointer Cursor::store(jet::TableWriter& writer) const {
    if (started_) return writer.insert(*started_, assignments_);
    const jet::RowPointer place = keys_[current_];
    const auto now = writer.find(place);
    if (!now) throw rowDeleted();
    requireSame(writer.table(), *now);
    writer.update(place, assignments_);
    return place;
}

void Cursor::requireUnchanged() {
    auto operation = session_->forFetch().beginRead();
    const jet::Table table = tableThere(operation, table_);
    const auto now = rowThere(table, keys_[current_]);
    if (!now) throw rowDeleted();
    requireSame(table, *now);
}

void Cursor::requireSame(const jet::Table& table, const jet::Row& now) const {
    if (!image_) throw rowDeleted();
    for (std::size_t place = 0; place < columnCount(); ++place)
        if (table.value(now.view, column(place)) != image_->value(0, place)) throw rowChanged();
}

}  // namespace comdouble
